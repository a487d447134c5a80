#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/ntf/log/AlarmRecord.h"

namespace dolqctl {

/// One alarm from its first raise to its cease. What it says is what the latest raise said.
struct Alarm {
    std::string object;
    std::uint32_t vendorId = 0;
    std::uint16_t majorId = 0;
    std::uint16_t minorId = 0;
    std::uint32_t severity = 0;            ///< SaNtfSeverityT
    std::int64_t firstTimeNs = 0;          ///< of the first raise; times are since 1970, UTC
    std::int64_t lastTimeNs = 0;           ///< of the latest raise
    std::optional<std::int64_t> endTimeNs; ///< of the cease, if it came
    std::uint64_t timesRaised = 0;
    std::string text;
    std::vector<std::string> info; ///< additional information, without the correlation
    std::string correlationInfo;   ///< the leading "CI=..." entry; empty without one
    std::string programGroup;      ///< empty without one

    /// Of what was last heard of it.
    std::int64_t changeTimeNs() const { return endTimeNs.value_or(lastTimeNs); }
};

/// The alarms that notifications, given in the order of the log, amount to: those of the same
/// notification object and notification class are one alarm, and severity cleared ends it. Holds
/// the active alarms only, so its size does not grow with the log.
class AlarmList {
public:
    enum class Change {
        Raised,
        RaisedAgain,
        Ceased,
        None ///< a cease of what is not active
    };
    struct Applied {
        Change change = Change::None;
        const Alarm* alarm = nullptr; ///< valid until the next `apply`; null for `None`
    };

    Applied apply(const platform::ntf::AlarmRecord& record);

    /// The active alarms in no particular order.
    std::vector<const Alarm*> active() const;

    std::uint64_t ceasesWithoutAlarm() const { return m_ceasesWithoutAlarm; }

private:
    std::unordered_map<std::string, Alarm> m_active; ///< by class and object, see `keyOf`
    Alarm m_ceased;                                  ///< the latest
    std::uint64_t m_ceasesWithoutAlarm = 0;
};

} // namespace dolqctl
