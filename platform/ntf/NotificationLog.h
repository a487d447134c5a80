#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace platform::ntf {

/// Appends whole lines to a log that other threads and processes append to as well.
class NotificationLog {
public:
    /// Opens nothing yet.
    explicit NotificationLog(std::filesystem::path path);

    /// Appends `line`, which ends with a newline, as a line of its own and with one write; missing
    /// folders and the file are created. Returns 0 or the errno of what failed, ENOSPC when only a
    /// part could be written.
    int append(std::string line);

private:
    class File;
    std::shared_ptr<const File> lastFile() const;
    void keep(std::shared_ptr<const File> file);

    const std::filesystem::path m_path;
    std::shared_ptr<const File> m_file; ///< guarded by the service's mutex
};

} // namespace platform::ntf
