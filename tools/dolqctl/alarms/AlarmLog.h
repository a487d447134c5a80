#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ntf/log/AlarmRecord.h"

namespace dolqctl {

/// The notifications of a log that others append to, rotate and truncate meanwhile. Needs the
/// memory of one line; of a line beyond 4 MiB it takes only the beginning.
class AlarmLog {
public:
    /// `follows`: goes on with the next file when the log is rotated, and at the beginning when it
    /// is truncated, and takes a last line for one that is still being written.
    AlarmLog(std::filesystem::path path, bool follows);
    ~AlarmLog();
    AlarmLog(const AlarmLog&) = delete;
    AlarmLog& operator=(const AlarmLog&) = delete;

    /// False when there is no file. Throws `std::system_error` when it may not be read.
    bool open();

    /// What the next line holds. False at the end of what is there now, or when a signal came while
    /// it waited. Throws `std::system_error`.
    bool next(std::optional<platform::ntf::AlarmRecord>& record);

    /// What went by.
    struct Counts {
        std::uint64_t lines = 0;
        std::uint64_t notifications = 0;
        std::uint64_t skipped = 0; ///< lines that are no whole notification
    };
    const Counts& counts() const { return m_counts; }

    const std::filesystem::path& path() const { return m_path; }
    /// How much of the file now open is read; 0 for what is no regular file.
    unsigned percentRead() const;

private:
    bool findLine(std::string_view& line);
    bool fill();
    std::string_view takeRest();
    bool isReplaced() const;
    bool reopen();
    void close();

    const std::filesystem::path m_path;
    const bool m_follows;
    Counts m_counts;
    int m_file = -1;
    std::uint64_t m_bytesRead = 0; ///< of the file now open
    std::string m_buffer;
    std::size_t m_begin = 0;    ///< of what is not handed out yet
    std::size_t m_searched = 0; ///< up to here there is no newline
    bool m_skipsRest = false;   ///< of a line that was too long
};

} // namespace dolqctl
