#include "factory/FmiFactoryImpl.h"

#include "adapter/dolqAdapterImpl.h"
#include "common/CancellationHeld.h"
#include "ntf/dolqNtfSessionImpl.h"
#include "threadSpecificSingleton"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolq {

FmiFactoryImpl::FmiFactoryImpl() : m_map(std::make_unique<NotificationMap>()) {}

ruxa::fm::fmi::v1::FaultManagementI* FmiFactoryImpl::createFaultManagement() {
    // The session first: as an argument of `new` it could come after the adapter's memory.
    const std::shared_ptr<NtfSessionI> session = openSession();
    return new AdapterImpl(session, m_map.get()); // the client owns it
}

ruxa::fm::dolq::v1::ConfigurationI* FmiFactoryImpl::getConfiguration() { return m_map.get(); }

} // namespace dolq

namespace ruxa::fm::dolq::v1 {

using Slot = cxxutils::threadspecific::v1::ThreadSpecificSingleton<::dolq::FmiFactoryImpl>;

FmiFactory* getFmiFactory() {
    if (FmiFactory* const factory = Slot::getPtr()) {
        return factory;
    }
    // Neither the load-module handler nor TinyXML is asked to survive a cancelled thread.
    const common::CancellationHeld held;
    FmiFactory* const factory = Slot::getInstance();
    // The run fills the map of the factory just stored, which it reaches through this function.
    ::dolq::xmlconf::runMappingConfiguratorV1();
    return factory;
}

void freeFmiFactory() { Slot::reset(); }

} // namespace ruxa::fm::dolq::v1
