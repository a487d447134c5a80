#pragma once

#include "adapter/MappingI.h"
#include "mapping/MappingTable.h"
#include "ruxa/fm/dolq/v1/ConfigurationI.h"
#include "trace/TraceObject.h"

namespace dolq {

/// The table behind a v1 factory: starts empty and changes through the configuration interface,
/// which the reader of mapping files uses, too.
class NotificationMap final : public MappingI, public ruxa::fm::dolq::v1::ConfigurationI {
public:
    NotificationMap() = default;
    ~NotificationMap() override = default;

    NotificationMap(const NotificationMap&) = delete;
    NotificationMap& operator=(const NotificationMap&) = delete;

    bool getMinorType(std::uint32_t faultId, std::uint32_t& minorType,
                      const std::string& moClass) override;
    void setMapping(std::uint32_t faultId, std::uint32_t minorType) override;
    void setMapping(std::uint32_t faultId, std::uint32_t minorType,
                    const std::string& moClass) override;
    void configurationFile(const std::string& fileName) override;

private:
    MappingTable m_mapping;
    TraceObject m_traceObject{"DolqTraceLU", TraceObject::UntilRegistered::Nothing};
};

/// The table behind a v2 factory: given when it is made, and fixed from then on.
class NotificationMapV2 final : public MappingI {
public:
    /// Keeps a copy of `mapping`.
    explicit NotificationMapV2(const MappingTable& mapping);
    ~NotificationMapV2() override = default;

    NotificationMapV2(const NotificationMapV2&) = delete;
    NotificationMapV2& operator=(const NotificationMapV2&) = delete;

    bool getMinorType(std::uint32_t faultId, std::uint32_t& minorType,
                      const std::string& moClass) override;

private:
    MappingTable m_mapping;
    TraceObject m_traceObject{"DolqTraceLU", TraceObject::UntilRegistered::Nothing};
};

} // namespace dolq
