#pragma once

#include <cstdint>
#include <vector>

#include "Output.h"
#include "alarms/AlarmList.h"

namespace dolqctl {

/// Alarms for people, a line each.
class AlarmView {
public:
    /// `withState`: what became of each alarm, too. `isLong`: all that it says, below its line.
    AlarmView(Output& output, bool withState, bool isLong);

    /// `state`: "active", "ceased", ...
    void add(const Alarm& alarm, const char* state);

    /// What was added since; the heading comes once.
    void print() { m_output.print(m_table); }

private:
    void addBelow(const Alarm& alarm);

    Output& m_output;
    const bool m_withState;
    const bool m_isLong;
    Table m_table;
};

nlohmann::ordered_json toJson(const Alarm& alarm, const char* state);

/// "12:34:56" today, "Nov 21 12:34" within half a year, "Feb 29  2024" before; local time.
std::string timeText(std::int64_t timeNs);

/// "1 critical, 2 minor": how many there are of each severity, the worst first.
std::string severitiesText(const std::vector<const Alarm*>& alarms);

} // namespace dolqctl
