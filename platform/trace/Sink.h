#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>

namespace platform::trace {

/// Where the lines go: what `RUXA_TRACE_SINK` names. It holds no lock. Nobody is to be cancelled or
/// to get a signal while it opens and writes.
class Sink {
public:
    /// `choice`: "stderr", "file:PATH" or "syslog". What cannot be used is stderr, and `reason`
    /// says why.
    Sink(const std::string& choice, std::string& reason);

    /// Hands over a line, which has no line end yet. False when it is lost, if only in part: no
    /// room, nobody there, or nobody who reads. It waits for that one no longer than 100 ms, and
    /// not at all when the line before was lost as well.
    bool write(int priority, const std::string& line);

    /// Tells the operator something on stderr.
    void tell(const std::string& text);

private:
    bool toStderr(const std::string& line, std::chrono::milliseconds patience);

    const bool m_hasStderr;
    const bool m_isSyslog;
    std::filesystem::path m_file; // empty: none
    std::atomic<bool> m_failing{false};
    std::atomic<bool> m_torn{false}; // what was written to stderr last is half a line
};

} // namespace platform::trace
