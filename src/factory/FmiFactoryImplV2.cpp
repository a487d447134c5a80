// The entry of the second generation. The mapping files are read into a table first, and the
// factory is made around it: no client ever sees a factory whose table is not complete.

#include "factory/FmiFactoryImplV2.h"

#include <utility>

#include "adapter/dolqAdapterImpl.h"
#include "common/CancellationHeld.h"
#include "ntf/dolqNtfSessionImpl.h"
#include "threadSpecificSingleton"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolq {

// NOLINTNEXTLINE(performance-unnecessary-value-param): the copy is gone when the map has its own
FmiFactoryImplV2::FmiFactoryImplV2(MappingTable mapping)
    : m_map(std::make_unique<NotificationMapV2>(mapping)) {}

std::shared_ptr<ruxa::fm::fmi::v1::FaultManagementI> FmiFactoryImplV2::createFaultManagement() {
    const std::shared_ptr<NtfSessionI> session = openSession();
    return std::make_shared<AdapterImpl>(session, m_map.get());
}

} // namespace dolq

namespace ruxa::fm::dolq::v2 {

using Slot = cxxutils::threadspecific::v1::ThreadSpecificSingleton<::dolq::FmiFactoryImplV2>;

FmiFactory* getFmiFactory() {
    if (FmiFactory* const factory = Slot::getPtr()) {
        return factory;
    }
    const common::CancellationHeld held; // as the configurator asks
    ::dolq::MappingTable mapping;
    ::dolq::xmlconf::runMappingConfiguratorV2(mapping);
    auto factory = std::make_unique<::dolq::FmiFactoryImplV2>(std::move(mapping));
    Slot::setPtr(factory.get());
    return factory.release(); // the slot owns it now
}

void freeFmiFactory() { Slot::reset(); }

} // namespace ruxa::fm::dolq::v2
