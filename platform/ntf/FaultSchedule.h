#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <saAis.h>

namespace platform::ntf {

/// The calls of the interface, as a schedule names them.
enum class ServiceCall { Initialize, Finalize, Allocate, Value, Send, Free, Search, Read };
constexpr std::size_t kServiceCallCount = 8;

/// Which calls of the service are refused or delayed, so that a user can see how an application
/// stands it. README.md describes the text. Any thread may ask.
class FaultSchedule {
public:
    /// Throws std::invalid_argument, whose text names the part that is wrong.
    explicit FaultSchedule(const std::string& text);

    /// Counts one more `call`, waits for as long as the schedule says, and returns what to refuse
    /// the call with; SA_AIS_OK lets it through.
    SaAisErrorT answerTo(ServiceCall call);

private:
    struct Fault {
        ServiceCall call = ServiceCall::Send;
        SaAisErrorT result = SA_AIS_OK;
        std::uint64_t times = std::numeric_limits<std::uint64_t>::max();
        std::uint64_t after = 0;
        std::uint64_t delay = 0; ///< milliseconds
    };
    static Fault parseFault(const std::string& text);

    std::vector<Fault> m_faults;
    std::array<std::atomic<std::uint64_t>, kServiceCallCount> m_calls{};
};

/// The schedule in RUXA_NTF_FAULTS, read once, when this is first called; null without one. A wrong
/// one is reported on stderr and left out whole.
FaultSchedule* scheduledFaults();

} // namespace platform::ntf
