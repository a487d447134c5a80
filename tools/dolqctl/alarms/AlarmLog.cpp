#include "alarms/AlarmLog.h"

#include <algorithm>
#include <cerrno>
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

AlarmLog::AlarmLog(std::filesystem::path path, bool follows)
    : m_path(std::move(path)), m_follows(follows) {}

AlarmLog::~AlarmLog() { close(); }

bool AlarmLog::open() {
    m_file = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_file < 0 && errno != ENOENT) {
        fail(m_path);
    }
    return m_file >= 0;
}

void AlarmLog::close() {
    if (m_file >= 0) {
        ::close(m_file);
    }
    m_file = -1;
    m_bytesRead = 0;
}

bool AlarmLog::next(std::optional<platform::ntf::AlarmRecord>& record) {
    std::string_view text;
    if (!findLine(text)) {
        return false;
    }
    record = platform::ntf::parseLine(text);
    ++m_counts.lines;
    if (record) {
        ++m_counts.notifications;
    } else if (text.find_first_not_of(' ') != text.npos) {
        ++m_counts.skipped;
    }
    return true;
}

/// The next line without its newline, valid until the next call.
bool AlarmLog::findLine(std::string_view& line) {
    for (;;) {
        const std::size_t newline = m_buffer.find('\n', m_searched);
        if (newline != m_buffer.npos) {
            line = std::string_view(m_buffer).substr(m_begin, newline - m_begin);
            m_begin = m_searched = newline + 1;
            if (!std::exchange(m_skipsRest, false)) {
                return true;
            }
            continue;
        }
        m_searched = m_buffer.size();
        if (!m_skipsRest && m_buffer.size() - m_begin > kLongestLine) {
            m_skipsRest = true;
            line = std::string_view(m_buffer).substr(m_begin, kLongestLine);
            m_begin = m_searched;
            return true;
        }
        if (fill()) {
            continue;
        }
        if (m_follows && !isReplaced()) {
            return false;
        }
        if (m_follows && fill()) { // written between the two looks, and nobody goes on writing
            continue;
        }
        line = takeRest();
        const bool goesOn = m_follows && reopen();
        if (!line.empty() || !goesOn) {
            return !line.empty();
        }
    }
}

/// What follows the last newline of a file that is read to its end.
std::string_view AlarmLog::takeRest() {
    const std::size_t begin = std::exchange(m_begin, m_buffer.size());
    m_searched = m_begin;
    return std::exchange(m_skipsRest, false) ? std::string_view()
                                             : std::string_view(m_buffer).substr(begin);
}

/// Reads more behind what is not handed out yet. False at the end.
bool AlarmLog::fill() {
    if (m_file < 0) {
        return false;
    }
    m_buffer.erase(0, m_skipsRest ? m_searched : m_begin);
    m_begin = 0;
    const std::size_t end = m_searched = m_buffer.size();
    m_buffer.resize(end + kReadSize);
    ssize_t count = -1;
    do {
        count = ::read(m_file, m_buffer.data() + end, kReadSize);
    } while (count < 0 && errno == EINTR && !m_follows);
    m_buffer.resize(end + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count < 0 && errno != EINTR) {
        fail(m_path);
    }
    m_bytesRead += m_buffer.size() - end;
    return count > 0;
}

/// Whether the path now holds another file, or less than was read.
bool AlarmLog::isReplaced() const {
    struct stat ours {};
    struct stat there {};
    if (m_file < 0 || ::fstat(m_file, &ours) != 0 || ::stat(m_path.c_str(), &there) != 0 ||
        ours.st_ino != there.st_ino || ours.st_dev != there.st_dev) {
        return true;
    }
    return S_ISREG(ours.st_mode) && static_cast<std::uint64_t>(ours.st_size) < m_bytesRead;
}

bool AlarmLog::reopen() {
    close();
    return open();
}

unsigned AlarmLog::percentRead() const {
    struct stat ours {};
    const bool isKnown =
        m_file >= 0 && ::fstat(m_file, &ours) == 0 && S_ISREG(ours.st_mode) && ours.st_size > 0;
    return isKnown
               ? static_cast<unsigned>(100 * m_bytesRead / static_cast<std::uint64_t>(ours.st_size))
               : 0;
}

} // namespace dolqctl
