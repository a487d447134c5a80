#pragma once

#include <memory>

#include "mapping/dolqNotificationMapImpl.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace dolq {

/// One thread's v2 factory: as that of v1, but its table is complete before it exists.
class FmiFactoryImplV2 final : public ruxa::fm::dolq::v2::FmiFactory {
public:
    /// The map keeps a copy of `mapping`.
    explicit FmiFactoryImplV2(MappingTable mapping);
    ~FmiFactoryImplV2() override = default;

    FmiFactoryImplV2(const FmiFactoryImplV2&) = delete;
    FmiFactoryImplV2& operator=(const FmiFactoryImplV2&) = delete;

    std::shared_ptr<ruxa::fm::fmi::v1::FaultManagementI> createFaultManagement() override;

private:
    std::unique_ptr<NotificationMapV2> m_map; // never null
};

} // namespace dolq
