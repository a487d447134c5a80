#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
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

/// What the notifications of a log amount to, in the order of its lines: those of the same
/// notification object and notification class are one alarm, and severity cleared ends it.
struct AlarmLog {
    std::vector<Alarm> alarms; ///< in no particular order
    std::uint64_t notifications = 0;
    std::int64_t firstTimeNs = 0;   ///< of the first notification
    std::uint64_t skippedLines = 0; ///< that are no whole notification
};

/// Reads the active alarms and, `withCeased`, the others. Others may append meanwhile: a last line
/// without its newline counts if it is a whole notification. Throws when the file cannot be read,
/// and when it has lines, but no notification.
AlarmLog readAlarmLog(const std::filesystem::path& path, bool withCeased);

/// The file of the notification service that programs here are given, if that is not the embedded
/// one, which writes the log; otherwise empty.
std::string otherService();

/// Why alarms of programs here are in no log, and where to look instead. Empty if they are in one.
std::string whyElsewhere();

} // namespace dolqctl
