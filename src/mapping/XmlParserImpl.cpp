#include "mapping/XmlParserImpl.h"

namespace dolq {

void XmlParserImpl::parse(ruxa::fm::dolq::v1::ConfigurationI& configuration) {
    // The first in the deprecated form, which leaves a trace: old clients rely on both mappings.
    constexpr std::uint32_t kFaultId = 1025;
    constexpr std::uint32_t kMinorType = 0x8C0000; // 9175040
    configuration.setMapping(kFaultId, kMinorType);
    configuration.setMapping(kFaultId, kMinorType, "Object2");
}

} // namespace dolq
