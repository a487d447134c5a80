#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/ntf/log/AlarmRecord.h"

namespace dolqctl {

/// One alarm from its first raise to its cease.
struct Alarm {
    platform::ntf::AlarmRecord raised;     ///< what the latest raise said
    std::int64_t firstTimeNs = 0;          ///< of the first raise; times are since 1970, UTC
    std::optional<std::int64_t> endTimeNs; ///< of the cease, if it came
    std::uint64_t timesRaised = 0;

    /// Of what was last heard of it.
    std::int64_t changeTimeNs() const { return endTimeNs.value_or(raised.eventTimeNs); }
};

/// The alarms that notifications, given in the order of the log, amount to: those of the same
/// notification object and notification class are one alarm, and severity cleared ends it. Holds
/// the active alarms only, so its size does not grow with the log.
class AlarmList {
public:
    struct Applied {
        const char* change = "";      ///< "raised", "again" or "ceased"
        const Alarm* alarm = nullptr; ///< valid until the next `apply`; null if nothing changed
    };

    Applied apply(platform::ntf::AlarmRecord record);

    /// The active alarms in no particular order.
    std::vector<const Alarm*> active() const;

    std::uint64_t ceasesWithoutAlarm() const { return m_ceasesWithoutAlarm; }

private:
    std::unordered_map<std::string, Alarm> m_active; ///< by class and object, see `keyOf`
    Alarm m_ceased;                                  ///< the latest
    std::uint64_t m_ceasesWithoutAlarm = 0;
};

} // namespace dolqctl
