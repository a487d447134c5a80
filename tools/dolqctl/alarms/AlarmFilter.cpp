#include "alarms/AlarmFilter.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <optional>
#include <sstream>
#include <utility>

#include "Commands.h"
#include "Output.h"
#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

constexpr std::uint32_t kFirstSeverity = 1; // "cleared" is no severity of an alarm
constexpr std::uint32_t kLastSeverity = 5;
constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kMostSeconds = std::numeric_limits<std::int64_t>::max() / kNsPerSecond;

std::uint32_t severityOf(const std::string& name) {
    for (std::uint32_t severity = kFirstSeverity; severity <= kLastSeverity; ++severity) {
        if (name == common::kSeverityNames[severity]) {
            return severity;
        }
    }
    throw CommandError("unknown severity " + inQuotes(name) + ": choose from " +
                       joined(common::kClientSeverityNames));
}

/// The object itself, or one whose distinguished name begins with it.
bool contains(const std::string& object, const std::string& other) {
    return other.compare(0, object.size(), object) == 0 &&
           (other.size() == object.size() || other[object.size()] == ',');
}

/// "10m" in seconds.
std::optional<std::int64_t> parseAgo(const std::string& text) {
    constexpr std::pair<char, std::int64_t> kUnits[] = {
        {'s', 1}, {'m', 60}, {'h', 60 * 60}, {'d', 24 * 60 * 60}};
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    for (const auto& [unit, seconds] : kUnits) {
        if (result.ec == std::errc{} && result.ptr + 1 == end && *result.ptr == unit) {
            return number * seconds;
        }
    }
    return std::nullopt;
}

/// RFC 3339, in nanoseconds since 1970.
std::optional<std::int64_t> parseTime(const std::string& text) {
    std::tm time{};
    std::tm zone{};
    const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &time);
    if (rest != nullptr && *rest == '.') { // of alarms in that second, too many rather than too few
        rest += 1 + std::strspn(rest + 1, "0123456789");
    }
    if (rest == nullptr || (rest = strptime(rest, "%z", &zone)) == nullptr || *rest != '\0') {
        return std::nullopt;
    }
    std::tm day = time;
    timegm(&day);
    if (day.tm_mday != time.tm_mday) {
        return std::nullopt; // there is no such day
    }
    const std::int64_t seconds = timegm(&time) - zone.tm_gmtoff;
    // No alarm is beyond what the nanoseconds reach.
    return std::clamp(seconds, -kMostSeconds, kMostSeconds) * kNsPerSecond;
}

} // namespace

bool AlarmFilter::matches(const Alarm& alarm) const {
    const std::uint32_t severity = alarm.raised.perceivedSeverity;
    const bool hasSeverity = severities == kAnySeverity ||
                             (severity <= kLastSeverity && ((severities >> severity) & 1U) != 0);
    return hasSeverity && (object.empty() || contains(object, alarm.raised.notificationObject)) &&
           alarm.changeTimeNs() >= sinceNs;
}

std::uint32_t parseSeverities(const std::string& text) {
    std::uint32_t severities = 0;
    std::istringstream names(text);
    for (std::string name; std::getline(names, name, ',');) {
        const bool andWorse = !name.empty() && name.back() == '+';
        if (andWorse) {
            name.pop_back();
        }
        const std::uint32_t first = severityOf(name);
        for (std::uint32_t severity = first; severity <= (andWorse ? kLastSeverity : first);
             ++severity) {
            severities |= 1U << severity;
        }
    }
    return severities;
}

std::int64_t parseSince(const std::string& text) {
    using namespace std::chrono;
    const std::int64_t nowNs =
        duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
    if (const std::optional<std::int64_t> ago = parseAgo(text)) {
        return *ago > nowNs / kNsPerSecond ? 0 : nowNs - *ago * kNsPerSecond;
    }
    if (const std::optional<std::int64_t> time = parseTime(text)) {
        return *time;
    }
    throw CommandError(
        "no time: " + inQuotes(text) +
        "; give one like 2024-02-29T12:34:56Z, or how long ago, like 90s, 10m, 6h or 2d");
}

} // namespace dolqctl
