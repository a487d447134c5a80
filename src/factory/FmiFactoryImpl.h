#pragma once

#include <memory>

#include "mapping/dolqNotificationMapImpl.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"

namespace dolq {

/// One thread's v1 factory: it owns the table, to which all its adapters point, and each adapter
/// that it makes gets a session of its own.
class FmiFactoryImpl final : public ruxa::fm::dolq::v1::FmiFactory {
public:
    FmiFactoryImpl();
    ~FmiFactoryImpl() override = default;

    FmiFactoryImpl(const FmiFactoryImpl&) = delete;
    FmiFactoryImpl& operator=(const FmiFactoryImpl&) = delete;

    ruxa::fm::fmi::v1::FaultManagementI* createFaultManagement() override;
    ruxa::fm::dolq::v1::ConfigurationI* getConfiguration() override;

private:
    std::unique_ptr<NotificationMap> m_map; // never null
};

} // namespace dolq
