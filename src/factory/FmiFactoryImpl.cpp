// The entry of the first generation. The factory is stored for its thread before the mapping files
// are read, because reading them stores through the factory's own configuration interface.

#include "factory/FmiFactoryImpl.h"

#include "adapter/dolqAdapterImpl.h"
#include "common/CancellationHeld.h"
#include "ntf/dolqNtfSessionImpl.h"
#include "threadSpecificSingleton"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolq {

FmiFactoryImpl::FmiFactoryImpl() : m_map(std::make_unique<NotificationMap>()) {}

ruxa::fm::fmi::v1::FaultManagementI* FmiFactoryImpl::createFaultManagement() {
    // A statement of its own: as an argument of `new`, the session could be opened after the
    // adapter's memory is allocated, and would be opened in vain when there is none.
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
    const common::CancellationHeld held; // as the configurator asks
    FmiFactory* const factory = Slot::getInstance();
    // The run fills the map of the factory just stored, which it gets by calling this function
    // again. An exception leaves the factory stored with what was read.
    ::dolq::xmlconf::runMappingConfiguratorV1();
    return factory;
}

void freeFmiFactory() { Slot::reset(); }

} // namespace ruxa::fm::dolq::v1
