#pragma once

#include <cstdint>
#include <string>

#include "Output.h"
#include "alarms/AlarmList.h"
#include "alarms/AlarmLog.h"

namespace dolqctl {

/// Prints alarms one after the other, without knowing those to come.
class AlarmView {
public:
    enum class Layout {
        Rows,  ///< a table; what an alarm says stands indented below its row
        Json,  ///< one document
        Stream ///< one JSON document a line
    };

    /// `withState`: the rows say what became of an alarm, too.
    AlarmView(Output& output, Layout layout, bool withState);

    void begin(const std::string& logPath);
    /// `state`: "active", "ceased", ...
    void show(const Alarm& alarm, const char* state);
    /// Of the layout `Json` only: the counts close the document.
    void end(const AlarmLog::Counts& counts, std::uint64_t ceasesWithoutAlarm);

    /// How far the reading of a long log is, for a person who waits.
    void progress(const AlarmLog& log);

private:
    void printRow(const Alarm& alarm, const char* state);
    void clearProgress();

    Output& m_output;
    const Layout m_layout;
    const bool m_withState;
    const bool m_showsProgress;
    bool m_hasProgress = false;
    bool m_isFirst = true;
};

} // namespace dolqctl
