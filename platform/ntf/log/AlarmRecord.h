#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "common/FormatTime.h"

/// One alarm notification as the service received it, and its line of the notification log.
/// README.md describes the line's layout. Nothing here has state: any thread may call it.
namespace platform::ntf {

/// An entry of the additional information, or a proposed repair action. `value` is empty when the
/// sender named a type but allocated no value, and the bytes of a type that is no number, a string
/// without its terminating NUL. A number read back from a line is signed only below 0.
struct Element {
    std::uint16_t id = 0;
    std::uint32_t type = 0; ///< SaNtfValueTypeT
    std::variant<std::monostate, std::int64_t, std::uint64_t, double, std::string> value;
};

/// Texts are the sender's bytes, valid UTF-8 or not.
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
    std::string additionalText;
    std::vector<Element> additionalInfo;
    std::vector<Element> proposedRepairActions;
    std::int32_t processId = 0; ///< the sender's
    std::int32_t threadId = 0;  ///< the sender's, as the kernel numbers threads
};

using common::formatTime;

/// The record's line, newline included.
std::string toLine(const AlarmRecord& record);

struct ParsedLine {
    enum class Kind {
        Notification, ///< `record` holds it
        Torn,         ///< no JSON document, as a writer that was cut off leaves it
        Foreign,      ///< JSON, but no alarm notification
        Blank         ///< empty, or what the next writer made of a torn line
    };
    Kind kind = Kind::Torn;
    AlarmRecord record;
    std::string reason; ///< why it is no notification
};

/// Reads a line back, with or without its newline. Texts get their original bytes again.
ParsedLine parseLine(std::string_view line);

} // namespace platform::ntf
