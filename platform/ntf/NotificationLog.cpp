#include "platform/ntf/NotificationLog.h"

#include <cerrno>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "common/CancellationHeld.h"
#include "common/Descriptor.h"
#include "platform/ntf/ServiceMutex.h"

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

/// Others may have put a link there, to a file that is none of theirs.
bool isWritableForOthers(const fs::path& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

bool canBeALog(const struct stat& status) {
    const bool isNullDevice = S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
    return S_ISREG(status.st_mode) || isNullDevice;
}

} // namespace

/// An open log. The application may close its descriptor, as daemons close all they know of, and
/// then the number may be another file's.
class NotificationLog::File {
public:
    File() = default;
    ~File() {
        if (isOpen()) {
            const common::CancellationHeld here;
            ::close(m_descriptor);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Returns 0 or an errno value.
    int open(const fs::path& path) {
        // O_NONBLOCK: nothing waits for the other end of a FIFO.
        const int flags = O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK |
                          (isWritableForOthers(path.parent_path()) ? O_NOFOLLOW : 0);
        m_descriptor = common::Descriptor(::open(path.c_str(), flags, 0640)).release();
        if (m_descriptor < 0 || ::fstat(m_descriptor, &m_identity) != 0) {
            return errno;
        }
        return canBeALog(m_identity) ? 0 : EINVAL;
    }

    int descriptor() const { return m_descriptor; }

    /// Whether it is what `path` leads to. A path that cannot be looked up any more, after a change
    /// of user, leads there for good; one that leads nowhere was renamed or deleted.
    bool isCurrent(const fs::path& path) const {
        struct stat there {};
        return isOpen() && (::stat(path.c_str(), &there) == 0 ? isSame(there) : errno != ENOENT);
    }

    /// Half a line stays at the end when a writer is killed or the disk is full.
    bool endsWithinALine() const {
        struct stat status {};
        char last = '\n';
        return ::fstat(m_descriptor, &status) == 0 && status.st_size > 0 &&
               ::pread(m_descriptor, &last, 1, status.st_size - 1) == 1 && last != '\n';
    }

private:
    bool isOpen() const {
        struct stat status {};
        return m_descriptor >= 0 && ::fstat(m_descriptor, &status) == 0 && isSame(status);
    }
    bool isSame(const struct stat& other) const {
        return other.st_dev == m_identity.st_dev && other.st_ino == m_identity.st_ino;
    }

    int m_descriptor = -1;
    struct stat m_identity {};
};

NotificationLog::NotificationLog(fs::path path) : m_path(std::move(path)) {}

int NotificationLog::append(std::string line) {
    const common::CancellationHeld here;
    std::shared_ptr<const File> file = lastFile();
    if (file == nullptr || !file->isCurrent(m_path)) {
        createFolders(m_path.parent_path());
        const auto opened = std::make_shared<File>();
        if (const int error = opened->open(m_path); error != 0) {
            return error;
        }
        keep(opened);
        file = opened;
    }
    if (file->endsWithinALine()) {
        line.insert(line.begin(), '\n');
    }
    ssize_t written = -1;
    do {
        written = ::write(file->descriptor(), line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    if (written < 0) {
        return errno;
    }
    // Without its newline alone it is a whole line still: the next one begins with a newline.
    return static_cast<std::size_t>(written) + 1 < line.size() ? ENOSPC : 0;
}

std::shared_ptr<const NotificationLog::File> NotificationLog::lastFile() const {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    return m_file;
}

void NotificationLog::keep(std::shared_ptr<const File> file) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    m_file.swap(file);
}

} // namespace platform::ntf
