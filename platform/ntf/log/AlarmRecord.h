#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/FormatTime.h"

/// One alarm notification as the service received it, and its line of the notification log.
/// README.md describes the line's layout. Nothing here has state: any thread may call it.
namespace platform::ntf {

/// An entry of the additional information, or a proposed repair action.
struct Element {
    std::uint16_t id = 0;
    std::uint32_t type = 0;           ///< SaNtfValueTypeT
    std::optional<std::string> value; ///< of the type string, if the sender allocated it
};

/// Texts are the sender's bytes; one that was read back has U+FFFD for what was not UTF-8.
struct AlarmRecord {
    std::uint64_t notificationId = 0; ///< unique in the log, increasing within a process
    std::int64_t eventTimeNs = 0;     ///< since 1970-01-01 00:00 UTC
    std::uint32_t eventType = 0;      ///< SaNtfEventTypeT
    std::string notificationObject;
    std::string notifyingObject;
    std::uint32_t vendorId = 0;
    std::uint16_t majorId = 0;
    std::uint16_t minorId = 0;
    std::uint32_t perceivedSeverity = 0; ///< SaNtfSeverityT
    std::uint32_t probableCause = 0;     ///< SaNtfProbableCauseT
    std::uint32_t trend = 0;             ///< SaNtfSeverityTrendT
    std::uint16_t thresholdId = 0;
    std::vector<std::uint64_t> correlatedNotifications;
    std::string additionalText;
    std::vector<Element> additionalInfo;
    std::vector<Element> proposedRepairActions;
    std::int32_t processId = 0; ///< the sender's
    std::int32_t threadId = 0;  ///< the sender's, as the kernel numbers threads
};

using common::formatTime;

/// The record's line, newline included.
std::string toLine(const AlarmRecord& record);

/// Reads a line back, with or without its newline. Nothing when it is no whole notification: blank,
/// half a line that a killed process left, or another program's.
std::optional<AlarmRecord> parseLine(std::string_view line);

} // namespace platform::ntf
