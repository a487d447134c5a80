#pragma once

#include <filesystem>
#include <mutex>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

namespace platform::ntf {

/// The notification log's path: RUXA_NTF_LOG; else ruxa/notifications.jsonl in XDG_STATE_HOME or in
/// ~/.local/state; else notifications.jsonl in the current folder. Absolute.
std::filesystem::path notificationLogPath();

/// Appends whole lines to a log that other threads and processes append to as well.
class NotificationLog {
public:
    /// Opens nothing yet.
    explicit NotificationLog(std::filesystem::path path);
    ~NotificationLog();
    NotificationLog(const NotificationLog&) = delete;
    NotificationLog& operator=(const NotificationLog&) = delete;

    /// Appends `line`, which ends with a newline, with one write; missing folders and the file are
    /// created. Half a line that was there is blanked out. Returns 0 or the errno of what failed,
    /// ENOSPC when only a part could be written.
    int append(const std::string& line);

private:
    int openCurrentFile();
    bool isCurrentFileOpen() const;
    void close();
    bool followsWholeLine(off_t begin) const;
    void blankOutTornLine(off_t begin, const std::string& line) const;
    bool readAt(off_t begin, std::string& bytes) const;

    const std::filesystem::path m_path;
    std::mutex m_mutex;
    int m_file = -1;
    struct stat m_identity {};
    pid_t m_openedBy = 0;
};

} // namespace platform::ntf
