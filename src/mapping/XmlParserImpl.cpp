#include "mapping/XmlParserImpl.h"

namespace dolq {

void XmlParserImpl::parse(ruxa::fm::dolq::v1::ConfigurationI& configuration) {
    // Meant: the first in the deprecated form, with its trace. Clients of old count on both.
    constexpr std::uint32_t kFaultId = 1025;
    constexpr std::uint32_t kMinorType = 0x8C0000; // 9175040
    configuration.setMapping(kFaultId, kMinorType);
    configuration.setMapping(kFaultId, kMinorType, "Object2");
}

} // namespace dolq
