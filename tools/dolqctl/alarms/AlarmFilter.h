#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "alarms/AlarmList.h"

namespace dolqctl {

/// Which alarms are shown. As it is made, all of them.
struct AlarmFilter {
    static constexpr std::uint32_t kAnySeverity = ~0U; ///< unknown ones, too
    std::uint32_t severities = kAnySeverity;           ///< or a bit for each SaNtfSeverityT
    std::string object; ///< it and the objects it contains; empty: any
    std::int64_t sinceNs = std::numeric_limits<std::int64_t>::min(); ///< raised or ceased then

    bool matches(const Alarm& alarm) const;
};

/// "major,critical": these. "minor+": minor and what is worse. Throws `CommandError`.
std::uint32_t parseSeverities(const std::string& text);

/// RFC 3339 ("2024-02-29T12:34:56Z", "2024-02-29T12:34:56.5+01:00") or how long ago, a number and
/// s, m, h or d ("10m"), in nanoseconds since 1970. Throws `CommandError`.
std::int64_t parseSince(const std::string& text);

} // namespace dolqctl
