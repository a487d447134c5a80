#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// A file that this and other processes append lines to.
class GrowingFile {
public:
    /// Starts at the file's present end, or at its beginning when it does not exist yet.
    explicit GrowingFile(std::filesystem::path path);

    const std::filesystem::path& path() const { return m_path; }

    /// The whole lines that have come since the last call, without their newlines.
    std::vector<std::string> newLines();

private:
    std::filesystem::path m_path;
    std::uintmax_t m_offset;
};

/// Shows what this process caused on the other side of the library: the notifications as the
/// service received them, and the trace. An application does not need any of this.
class Observer {
public:
    /// Finds both files by the environment variables that the embedded platform goes by.
    Observer();

    /// Prints where the notifications and the trace can be read.
    void printPlaces() const;

    /// Prints what has come since the last call. Returns the number of notifications.
    std::size_t printNews();

private:
    GrowingFile m_notificationLog;
    GrowingFile m_traceFile;
};
