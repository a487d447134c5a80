#include "factory/FmiFactoryImplV2.h"

#include "adapter/dolqAdapterImpl.h"
#include "factory/NtfSession.h"
#include "threadSpecificSingleton"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolq {

FmiFactoryImplV2::FmiFactoryImplV2(const MappingTable& mapping)
    : m_map(std::make_unique<NotificationMapV2>(mapping)) {}

std::shared_ptr<ruxa::fm::fmi::v1::FaultManagementI> FmiFactoryImplV2::createFaultManagement() {
    return std::make_shared<AdapterImpl>(makeNtfSession(), m_map.get());
}

} // namespace dolq

namespace ruxa::fm::dolq::v2 {

using Slot = cxxutils::threadspecific::v1::ThreadSpecificSingleton<::dolq::FmiFactoryImplV2>;

FmiFactory* getFmiFactory() {
    if (FmiFactory* const factory = Slot::getPtr()) {
        return factory;
    }
    ::dolq::MappingTable mapping;
    ::dolq::xmlconf::runMappingConfiguratorV2(mapping);
    auto factory = std::make_unique<::dolq::FmiFactoryImplV2>(mapping);
    Slot::setPtr(factory.get());
    return factory.release(); // the slot owns it now
}

void freeFmiFactory() { Slot::reset(); }

} // namespace ruxa::fm::dolq::v2
