#include "AlarmFilter.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace dolqctl {

namespace {

constexpr std::uint32_t kFirstSeverity = 1; // "cleared" is no severity of an alarm
constexpr std::uint32_t kLastSeverity = 5;
constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kMostSeconds = std::numeric_limits<std::int64_t>::max() / kNsPerSecond;

std::uint32_t severityOf(const std::string& name) {
    for (std::uint32_t severity = kFirstSeverity; severity <= kLastSeverity; ++severity) {
        if (name == ruxa::ntf::severityName(severity)) {
            return severity;
        }
    }
    throw std::invalid_argument("unknown severity '" + name +
                                "': indeterminate, warning, minor, major or critical");
}

/// The object itself, or one whose distinguished name begins with it.
bool contains(const std::string& object, const std::string& other) {
    return other.compare(0, object.size(), object) == 0 &&
           (other.size() == object.size() || other[object.size()] == ',');
}

std::int64_t secondsOfUnit(char unit) {
    switch (unit) {
    case 's':
        return 1;
    case 'm':
        return 60;
    case 'h':
        return 60 * 60;
    default:
        return 24 * 60 * 60;
    }
}

} // namespace

bool AlarmFilter::matches(const Alarm& alarm) const {
    const bool hasSeverity = alarm.severity >= 32 || ((severities >> alarm.severity) & 1U) != 0;
    return hasSeverity && (object.empty() || contains(object, alarm.object)) &&
           alarm.endTimeNs.value_or(alarm.lastTimeNs) >= sinceNs;
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

std::int64_t parseSince(const std::string& text, std::int64_t nowNs) {
    static const std::regex kAgo(R"((\d{1,9})([smhd]))");
    static const std::regex kTime(
        R"((\d{4}-\d\d-\d\d[Tt]\d\d:\d\d:\d\d)(\.\d{1,9})?(?:[Zz]|([+-])(\d\d):(\d\d)))");
    std::smatch part;
    if (std::regex_match(text, part, kAgo)) {
        const std::int64_t ago = std::stoll(part[1]) * secondsOfUnit(part[2].str().front());
        return ago > nowNs / kNsPerSecond ? 0 : nowNs - ago * kNsPerSecond;
    }
    std::tm time{};
    if (!std::regex_match(text, part, kTime) ||
        strptime(part[1].str().c_str(), "%Y-%m-%dT%H:%M:%S", &time) == nullptr) {
        throw std::invalid_argument(
            "no time: '" + text +
            "'; give one like 2024-02-29T12:34:56Z, or how long ago, like 90s, 10m, 6h or 2d");
    }
    std::int64_t seconds = timegm(&time);
    if (part[3].matched) {
        const std::int64_t offset = (std::stoll(part[4]) * 60 + std::stoll(part[5])) * 60;
        seconds -= part[3] == "+" ? offset : -offset;
    }
    if (seconds <= -kMostSeconds || seconds >= kMostSeconds) {
        throw std::invalid_argument("the time '" + text + "' is too far off");
    }
    const double fraction = part[2].matched ? std::stod("0" + part[2].str()) : 0;
    return seconds * kNsPerSecond + std::llround(fraction * static_cast<double>(kNsPerSecond));
}

} // namespace dolqctl
