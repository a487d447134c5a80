#include "common/RegularFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace common {

File openRegularFile(const std::string& path) {
    // O_NONBLOCK: opening a FIFO without a writer does not wait.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        const int error = descriptor < 0 ? errno : S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        errno = error;
        return {nullptr, &std::fclose};
    }
    File file(::fdopen(descriptor, "rb"), &std::fclose);
    if (file == nullptr) {
        ::close(descriptor);
        errno = ENOMEM;
    }
    return file;
}

int readWhole(std::FILE* file, std::size_t maxSize, std::string& content) {
    const int descriptor = ::fileno(file);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return errno;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maxSize) {
        return EFBIG;
    }
    content.clear();
    content.reserve(size);
    char chunk[16384];
    while (content.size() < size) {
        // By offset: the stream stays where it is.
        const ssize_t got =
            ::pread(descriptor, chunk, std::min(sizeof(chunk), size - content.size()),
                    static_cast<off_t>(content.size()));
        if (got < 0 && errno != EINTR) {
            return errno;
        }
        if (got == 0) {
            break; // it has shrunk meanwhile
        }
        content.append(chunk, got > 0 ? static_cast<std::size_t>(got) : 0);
    }
    return 0;
}

} // namespace common
