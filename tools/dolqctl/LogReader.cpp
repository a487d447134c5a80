#include "LogReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dolqctl {

namespace {

constexpr std::size_t kReadSize = std::size_t{256} * 1024;
constexpr std::size_t kLongestLine = std::size_t{4} * 1024 * 1024;

[[noreturn]] void fail(const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(), "cannot read " + path.string());
}

} // namespace

LogReader::LogReader(std::filesystem::path path) : m_path(std::move(path)) {}

LogReader::~LogReader() { close(); }

bool LogReader::open() {
    m_file = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_file < 0 && errno != ENOENT) {
        fail(m_path);
    }
    return m_file >= 0;
}

void LogReader::close() {
    if (m_file >= 0) {
        ::close(m_file);
    }
    m_file = -1;
    m_bytesRead = 0;
    m_begin = m_end = m_searched = 0;
    m_skipsRest = false;
}

bool LogReader::next(std::string_view& line) {
    for (;;) {
        while (const char* const newline = findNewline()) {
            const char* const begin = m_buffer.data() + m_begin;
            m_begin = m_searched = static_cast<std::size_t>(newline + 1 - m_buffer.data());
            if (!std::exchange(m_skipsRest, false)) {
                line = {begin, static_cast<std::size_t>(newline - begin)};
                return true;
            }
        }
        if (m_skipsRest) {
            m_begin = m_end;
        } else if (m_end - m_begin > kLongestLine) {
            m_skipsRest = true;
            line = {m_buffer.data() + m_begin, kLongestLine};
            m_begin = m_end;
            return true;
        }
        if (!fill()) {
            return false;
        }
    }
}

const char* LogReader::findNewline() {
    const std::size_t from = std::exchange(m_searched, m_end);
    return from == m_end
               ? nullptr
               : static_cast<const char*>(std::memchr(m_buffer.data() + from, '\n', m_end - from));
}

std::string_view LogReader::takeRest() {
    const std::string_view rest =
        m_skipsRest ? std::string_view()
                    : std::string_view(m_buffer.data() + m_begin, m_end - m_begin);
    m_begin = m_searched = m_end;
    return rest;
}

/// Reads more behind what is not handed out yet. False at the end.
bool LogReader::fill() {
    if (m_file < 0) {
        return false;
    }
    std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin),
              m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end), m_buffer.begin());
    m_end -= m_begin;
    m_searched -= m_begin;
    m_begin = 0;
    m_buffer.resize(std::max(m_buffer.size(), m_end + kReadSize));
    ssize_t count = -1;
    do {
        count = ::read(m_file, m_buffer.data() + m_end, kReadSize);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        fail(m_path);
    }
    m_end += static_cast<std::size_t>(count);
    m_bytesRead += static_cast<std::uint64_t>(count);
    return count > 0;
}

LogReader::State LogReader::state() const {
    struct stat ours {};
    struct stat there {};
    if (m_file < 0 || ::fstat(m_file, &ours) != 0 || ::stat(m_path.c_str(), &there) != 0 ||
        ours.st_ino != there.st_ino || ours.st_dev != there.st_dev) {
        return State::Replaced;
    }
    const auto size = static_cast<std::uint64_t>(ours.st_size);
    return S_ISREG(ours.st_mode) && size < m_bytesRead ? State::Truncated : State::Same;
}

bool LogReader::reopen() {
    close();
    return open();
}

std::uint64_t LogReader::size() const {
    struct stat ours {};
    return m_file >= 0 && ::fstat(m_file, &ours) == 0 && S_ISREG(ours.st_mode)
               ? static_cast<std::uint64_t>(ours.st_size)
               : 0;
}

} // namespace dolqctl
