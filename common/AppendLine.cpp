#include "common/AppendLine.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "common/Descriptor.h"
#include "common/Undisturbed.h"

namespace common {

namespace {

namespace fs = std::filesystem;

/// With its missing parents. What fails shows when the file is opened.
void createFolder(const fs::path& folder) {
    if (::mkdir(folder.c_str(), 0700) != 0 && errno == ENOENT && folder.has_relative_path()) {
        createFolder(folder.parent_path());
        ::mkdir(folder.c_str(), 0700);
    }
}

/// Others may have put a link there, to a file that is none of theirs.
bool isWritableForOthers(const fs::path& folder) {
    struct stat status {};
    return ::stat(folder.c_str(), &status) == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

bool canBeAppendedTo(const struct stat& status) {
    const bool isNullDevice = S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
    return S_ISREG(status.st_mode) || isNullDevice;
}

bool endsWithinALine(int file, off_t size) {
    char last = '\n';
    return size > 0 && ::pread(file, &last, 1, size - 1) == 1 && last != '\n';
}

} // namespace

int appendLine(const fs::path& path, std::string line) {
    const Undisturbed undisturbed;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : ".";
    createFolder(folder);
    // O_NONBLOCK: nothing waits for the other end of a device.
    const int flags = O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK |
                      (isWritableForOthers(folder) ? O_NOFOLLOW : 0);
    const Descriptor file(::open(path.c_str(), flags, 0640));
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        return errno;
    }
    if (!canBeAppendedTo(status)) {
        return EINVAL;
    }
    if (endsWithinALine(file.number(), status.st_size)) {
        line.insert(line.begin(), '\n');
    }
    ssize_t written = -1;
    do {
        written = ::write(file.number(), line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    if (written < 0) {
        return errno;
    }
    // Without its newline alone the line is whole: the next one begins with a newline.
    return static_cast<std::size_t>(written) + 1 < line.size() ? ENOSPC : 0;
}

std::string appendFailure(int error) {
    switch (error) {
    case EINVAL:
        return "it is neither a regular file nor /dev/null";
    case ELOOP:
        return "it is a symbolic link in a folder that others can write to, or a circle of links";
    case ENOSPC:
    case EFBIG:
        return "no room is left on the disk, in the quota or within the file size limit";
    default:
        return std::generic_category().message(error);
    }
}

} // namespace common
