#include "alarms/AlarmFilter.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <ctime>
#include <iterator>
#include <optional>
#include <sstream>
#include <utility>

#include "Commands.h"
#include "Output.h"
#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kMostSeconds = std::numeric_limits<std::int64_t>::max() / kNsPerSecond;

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

/// RFC 3339, in seconds since 1970.
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
    return timegm(&time) - zone.tm_gmtoff;
}

std::int64_t nanosecondsOf(const std::string& since) {
    std::optional<std::int64_t> seconds = parseTime(since);
    if (const std::optional<std::int64_t> ago = parseAgo(since)) {
        seconds = std::time(nullptr) - *ago;
    }
    if (!seconds) {
        throw CommandError(
            "no time: " + inQuotes(since) +
            "; give one like 2024-02-29T12:34:56Z, or how long ago, like 90s, 10m, 6h or 2d");
    }
    // No alarm is beyond what the nanoseconds reach.
    return std::clamp(*seconds, -kMostSeconds, kMostSeconds) * kNsPerSecond;
}

} // namespace

AlarmFilter::AlarmFilter(const std::string& severities, std::string object,
                         const std::string& since)
    : m_object(std::move(object)) {
    std::istringstream names(severities);
    for (std::string name; std::getline(names, name, ',');) {
        const bool andWorse = !name.empty() && name.back() == '+';
        if (andWorse) {
            name.pop_back();
        }
        const auto* const end = std::end(common::kSeverityNames);
        // "cleared", the first one, is no severity of an alarm.
        const auto* const found = std::find(std::begin(common::kSeverityNames) + 1, end, name);
        if (found == end) {
            throw CommandError("unknown severity " + inQuotes(name) + ": choose from " +
                               joined(common::kClientSeverityNames));
        }
        for (const auto* each = found; each != (andWorse ? end : found + 1); ++each) {
            m_severities.insert(static_cast<std::uint32_t>(each - common::kSeverityNames));
        }
    }
    if (!since.empty()) {
        m_sinceNs = nanosecondsOf(since);
    }
}

bool AlarmFilter::matches(const Alarm& alarm) const {
    return (m_severities.empty() || m_severities.count(alarm.raised.perceivedSeverity) != 0) &&
           (m_object.empty() || contains(m_object, alarm.raised.notificationObject)) &&
           alarm.changeTimeNs() >= m_sinceNs;
}

} // namespace dolqctl
