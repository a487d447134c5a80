#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dolqctl {

/// Collects what the embedded trace backend records in this process. That reads its environment
/// once, so the capture begins before the first use of the library. A backend with settings of its
/// own writes elsewhere, and then there are no lines.
class TraceCapture {
public:
    /// Failures and the flow of calls; `details`: those, too.
    explicit TraceCapture(bool details);
    ~TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    std::vector<std::string> lines() const;

    /// Gives the lines to the file or to syslog, where RUXA_TRACE_SINK asked for one: who collects
    /// traces there misses none of this process's.
    void passOn() const;

private:
    const std::optional<std::string> m_sinkBefore;
    const int m_file;
};

} // namespace dolqctl
