#pragma once

#include <cstdint>
#include <limits>
#include <set>
#include <string>

#include "alarms/AlarmList.h"

namespace dolqctl {

/// Which alarms are shown.
class AlarmFilter {
public:
    /// `severities`: "major,critical" are these, "minor+" minor and what is worse. `since`: RFC
    /// 3339 ("2024-02-29T12:34:56Z", "2024-02-29T12:34:56.5+01:00") or how long ago, a number and
    /// s, m, h or d ("10m"). Empty: any. Throws `CommandError`.
    AlarmFilter(const std::string& severities, std::string object, const std::string& since);

    /// Whether it has one of the severities, concerns the object or one that this contains, and was
    /// raised or ceased since.
    bool matches(const Alarm& alarm) const;

private:
    std::set<std::uint32_t> m_severities; // SaNtfSeverityT; empty: any
    std::string m_object;
    std::int64_t m_sinceNs = std::numeric_limits<std::int64_t>::min(); // since 1970
};

} // namespace dolqctl
