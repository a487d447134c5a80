#pragma once

#include <cstdint>
#include <string>

namespace ruxa::zum2::v1 {

/// The correlation service: derives correlation UUIDs, by which alarms that share a cause are
/// recognised across the processes of a system. May be called from any thread.
class CorrelationApi {
public:
    virtual ~CorrelationApi() = default;

    /// Writes the correlation UUID of event `eventId` as text into `correlationUUID` and returns
    /// true: one and the same in every process of a system. On failure, and for id 0, which means
    /// no event, returns false and leaves `correlationUUID` as it was.
    virtual bool getDerivedCorrelationUUID(std::uint32_t eventId, std::string& correlationUUID) = 0;
};

/// The process's correlation service, owned by the library; null when there is none.
[[gnu::visibility("default")]] CorrelationApi* getAPI();

} // namespace ruxa::zum2::v1
