#include "common/RegularFile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/Descriptor.h"

namespace common {

int readRegularFile(const std::string& path, std::size_t maxSize, std::string& content) {
    struct stat status {};
    // Asked by name first: opening a FIFO waits for a writer, and opening a device can do anything.
    if (::stat(path.c_str(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        return errno;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maxSize) {
        return EFBIG;
    }
    content.resize(size);
    for (std::size_t had = 0; had < size;) {
        const ssize_t got = ::read(file.number(), &content[had], size - had);
        if (got == 0 || (got < 0 && errno != EINTR)) {
            return got == 0 ? ENODATA : errno;
        }
        had += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    }
    return 0;
}

} // namespace common
