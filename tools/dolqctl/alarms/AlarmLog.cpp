#include "alarms/AlarmLog.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "Library.h"

namespace dolqctl {

namespace {

constexpr std::size_t kLongestLine = std::size_t{4} * 1024 * 1024;

[[noreturn]] void fail(const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(), "cannot read " + path.string());
}

} // namespace

AlarmLog::AlarmLog(std::filesystem::path path, bool follows)
    : m_path(std::move(path)), m_follows(follows), m_file(nullptr, &std::fclose) {}

bool AlarmLog::open() {
    m_file.reset(std::fopen(m_path.c_str(), "re"));
    if (!m_file && errno != ENOENT) {
        fail(m_path);
    }
    return m_file != nullptr;
}

bool AlarmLog::next(std::optional<platform::ntf::AlarmRecord>& record) {
    while (!readLine()) {
        if (m_follows && !isReplaced()) {
            return false;
        }
        if (m_follows && readLine()) { // written between the two looks, and nobody goes on writing
            break;
        }
        const bool goesOn = m_follows && open();
        if (!m_line.empty()) { // the last line, without its newline
            break;
        }
        if (!goesOn) {
            return false;
        }
    }
    record = platform::ntf::parseLine(m_line);
    if (record && m_counts.notifications++ == 0) {
        m_counts.firstTimeNs = record->eventTimeNs;
    } else if (!record && m_line.find_first_not_of(' ') != m_line.npos) {
        ++m_counts.skipped;
    }
    m_line.clear();
    return true;
}

/// Goes on with the line that is begun. False while its newline is not there.
bool AlarmLog::readLine() {
    if (!m_file) {
        return false;
    }
    for (int next; (next = getc_unlocked(m_file.get())) != EOF;) {
        if (next == '\n') {
            return true;
        }
        if (m_line.size() < kLongestLine) {
            m_line += static_cast<char>(next);
        }
    }
    if (std::ferror(m_file.get()) != 0 && errno != EINTR) {
        fail(m_path);
    }
    std::clearerr(m_file.get()); // more may come
    return false;
}

/// Whether the path now holds another file, or less than was read.
bool AlarmLog::isReplaced() const {
    struct stat ours {};
    struct stat there {};
    if (!m_file || ::fstat(fileno(m_file.get()), &ours) != 0 ||
        ::stat(m_path.c_str(), &there) != 0 || ours.st_ino != there.st_ino ||
        ours.st_dev != there.st_dev) {
        return true;
    }
    return S_ISREG(ours.st_mode) && ours.st_size < ::ftello(m_file.get());
}

std::string otherService() {
    const Library service(kNtfLibrary);
    return !service.isLoaded() || service.contains("RUXA_NTF_LOG") ? "" : service.file();
}

} // namespace dolqctl
