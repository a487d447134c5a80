#include "platform/ntf/log/NotificationLog.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "common/Environment.h"
#include "platform/ntf/log/AlarmRecord.h"

namespace platform::ntf {

namespace {

namespace fs = std::filesystem;

/// Creates `folder` and its missing parents, for their owner alone. What fails shows at the open.
void createFolders(const fs::path& folder) {
    if (::mkdir(folder.c_str(), 0700) == 0 || errno != ENOENT || !folder.has_relative_path()) {
        return;
    }
    createFolders(folder.parent_path());
    ::mkdir(folder.c_str(), 0700);
}

} // namespace

fs::path notificationLogPath() {
    fs::path path = common::trustedEnvironment("RUXA_NTF_LOG");
    if (path.empty()) {
        const fs::path stateHome = common::trustedEnvironment("XDG_STATE_HOME");
        const fs::path home = common::trustedEnvironment("HOME");
        if (stateHome.is_absolute()) {
            path = stateHome / "ruxa";
        } else if (home.is_absolute()) {
            path = home / ".local/state/ruxa";
        }
        path /= "notifications.jsonl";
    }
    std::error_code noCurrentFolder;
    const fs::path absolute = fs::absolute(path, noCurrentFolder);
    return noCurrentFolder ? path : absolute;
}

NotificationLog::NotificationLog(fs::path path) : m_path(std::move(path)) {}

NotificationLog::~NotificationLog() { close(); }

int NotificationLog::append(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isCurrentFileOpen()) {
        if (const int error = openCurrentFile(); error != 0) {
            return error;
        }
    }
    // A writer that was cut off may have left half a line, and this one would continue it: then it
    // is written again. No look before the write can tell, since others write at the same time.
    for (;;) {
        ssize_t written = -1;
        do {
            written = ::write(m_file, line.data(), line.size());
        } while (written < 0 && errno == EINTR);
        if (written < 0) {
            return errno;
        }
        if (static_cast<std::size_t>(written) != line.size()) {
            return ENOSPC;
        }
        const off_t begin = ::lseek(m_file, 0, SEEK_CUR) - written;
        if (followsWholeLine(begin)) {
            return 0;
        }
        blankOutTornLine(begin, line);
    }
}

int NotificationLog::openCurrentFile() {
    close();
    createFolders(m_path.parent_path());
    m_file = ::open(m_path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0640);
    if (m_file < 0 || ::fstat(m_file, &m_identity) != 0) {
        return errno;
    }
    m_openedBy = ::getpid();
    return 0;
}

/// A log that was renamed or deleted is begun anew, and a forked child needs a file position of its
/// own.
bool NotificationLog::isCurrentFileOpen() const {
    struct stat current {};
    return m_file >= 0 && m_openedBy == ::getpid() && ::stat(m_path.c_str(), &current) == 0 &&
           current.st_dev == m_identity.st_dev && current.st_ino == m_identity.st_ino;
}

void NotificationLog::close() {
    if (m_file >= 0) {
        ::close(m_file);
    }
    m_file = -1;
}

bool NotificationLog::followsWholeLine(off_t begin) const {
    char before = '\n';
    // Nothing lies before the first line, and nothing can be read back from a device.
    return begin <= 0 || ::pread(m_file, &before, 1, begin - 1) != 1 || before == '\n';
}

/// Puts blanks in the place of the half line in front of `begin` and of `line`, which continues it.
/// Nobody else touches them: the writer of the one was cut off, that of the other is the caller.
/// Leaves alone what does not begin as `line` does, which is somebody else's, and a notification
/// that lacks its newline only, which it gets.
void NotificationLog::blankOutTornLine(off_t begin, const std::string& line) const {
    constexpr off_t kLongestHalf = off_t{1} << 20;
    constexpr std::size_t kTellingSize = 16;
    std::string half(static_cast<std::size_t>(std::min(begin, kLongestHalf)), '\0');
    std::string written(line.size(), '\0');
    if (!readAt(begin - static_cast<off_t>(half.size()), half) || !readAt(begin, written) ||
        written != line) { // somebody has cut the log meanwhile
        return;
    }
    half.erase(0, half.rfind('\n') + 1); // npos + 1 is 0: no line ends before it
    if (half.compare(0, kTellingSize, line, 0, std::min(half.size(), kTellingSize)) != 0) {
        return;
    }
    std::string blanks(half.size() + line.size() - 1, ' ');
    if (parseLine(half).kind == ParsedLine::Kind::Notification) {
        blanks.replace(0, half.size() + 1, half + '\n');
    }
    // With O_APPEND, Linux would put them at the end. A log for appending only keeps the flag.
    if (::fcntl(m_file, F_SETFL, 0) != 0) {
        return;
    }
    // When it fails there is nothing more to try: readers skip the half line.
    [[maybe_unused]] const auto blanked =
        ::pwrite(m_file, blanks.data(), blanks.size(), begin - static_cast<off_t>(half.size()));
    ::fcntl(m_file, F_SETFL, O_APPEND);
}

bool NotificationLog::readAt(off_t begin, std::string& bytes) const {
    return ::pread(m_file, bytes.data(), bytes.size(), begin) == static_cast<ssize_t>(bytes.size());
}

} // namespace platform::ntf
