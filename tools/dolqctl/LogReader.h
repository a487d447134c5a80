#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace dolqctl {

/// Reads the lines of a log that others append to, rotate and truncate meanwhile. Needs the memory
/// of one line; of a line beyond 4 MiB it gives only the beginning.
class LogReader {
public:
    explicit LogReader(std::filesystem::path path);
    ~LogReader();
    LogReader(const LogReader&) = delete;
    LogReader& operator=(const LogReader&) = delete;

    /// False when there is no file. Throws `std::system_error` when it may not be read.
    bool open();

    /// The next whole line, without its newline; valid until the next call. False at the end of
    /// what is there now. Throws `std::system_error`.
    bool next(std::string_view& line);

    /// What follows the last newline, once `next` has come to the end; it counts as read then.
    std::string_view takeRest();

    /// Whether the path now holds another file, or less than was read.
    enum class State { Same, Replaced, Truncated };
    State state() const;

    /// Goes on at the beginning of the file that the path now holds. False when there is none.
    bool reopen();

    const std::filesystem::path& path() const { return m_path; }
    std::uint64_t bytesRead() const { return m_bytesRead; }
    /// Of the file now open, 0 when that is not known.
    std::uint64_t size() const;

private:
    void close();
    bool fill();
    const char* findNewline();

    const std::filesystem::path m_path;
    int m_file = -1;
    std::uint64_t m_bytesRead = 0; ///< of the file now open
    std::vector<char> m_buffer;
    std::size_t m_begin = 0; ///< of what is not handed out yet
    std::size_t m_end = 0;
    std::size_t m_searched = 0; ///< up to here there is no newline
    bool m_skipsRest = false;   ///< of a line that was too long
};

} // namespace dolqctl
