#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "AlarmList.h"
#include "Output.h"

namespace dolqctl {

/// What went by while the log was read.
struct LogCounts {
    std::uint64_t notifications = 0;
    std::uint64_t torn = 0;    ///< lines cut off or otherwise no JSON
    std::uint64_t foreign = 0; ///< JSON, but no alarm notification
    std::uint64_t ceasesWithoutAlarm = 0;
};

/// Prints alarms one after the other, without knowing those to come.
class AlarmPrinter {
public:
    enum class Layout {
        Rows,  ///< a table; what an alarm says stands indented below its row
        Json,  ///< one document
        Stream ///< one JSON document a line
    };

    /// `withState`: the rows say what became of an alarm, too.
    AlarmPrinter(Output& output, Layout layout, bool withState);

    void begin(const std::string& logPath);
    /// `state`: "active", "ceased", ...
    void print(const Alarm& alarm, const char* state);
    /// Of the layout `Json` only: the counts close the document.
    void end(const LogCounts& counts);

private:
    void printRow(const Alarm& alarm, const char* state);

    Output& m_output;
    const Layout m_layout;
    const bool m_withState;
    bool m_isFirst = true;
};

} // namespace dolqctl
