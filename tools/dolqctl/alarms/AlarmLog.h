#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/ntf/log/AlarmRecord.h"

namespace dolqctl {

/// The notifications of a log that others append to, rotate and truncate meanwhile. Needs the
/// memory of one line; of a line beyond 4 MiB it takes only the beginning.
class AlarmLog {
public:
    /// `follows`: goes on with the next file when the log is rotated, and at the beginning when it
    /// is truncated, and takes a last line for one that is still being written.
    AlarmLog(std::filesystem::path path, bool follows);

    /// False when there is no file. Throws `std::system_error` when it may not be read.
    bool open();

    /// What the next line holds. False at the end of what is there now, or when a signal came while
    /// it waited. Throws `std::system_error`.
    bool next(std::optional<platform::ntf::AlarmRecord>& record);

    /// What went by.
    struct Counts {
        std::uint64_t notifications = 0;
        std::uint64_t skipped = 0;    ///< lines that are no whole notification
        std::int64_t firstTimeNs = 0; ///< of the first notification
    };
    const Counts& counts() const { return m_counts; }

    const std::filesystem::path& path() const { return m_path; }

private:
    bool readLine();
    bool isReplaced() const;

    const std::filesystem::path m_path;
    const bool m_follows;
    Counts m_counts;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
    std::string m_line; ///< as far as it is there
};

/// The file of the notification service that programs here are given, if that is not the embedded
/// one, which writes the log; otherwise empty.
std::string otherService();

} // namespace dolqctl
