#include "common/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/Descriptor.h"

namespace common {

namespace {

constexpr std::size_t kFirstPiece = 65536;
constexpr std::string_view kHole{"\0\0\0\0", 4};

} // namespace

int readRegularFile(const std::string& path, std::size_t maxSize, std::string& content) {
    // O_NONBLOCK: opening a FIFO without a writer does not wait.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maxSize) {
        return EFBIG;
    }
    content.clear();
    while (content.size() < size) {
        const std::size_t had = content.size();
        content.resize(std::min(size, std::max(kFirstPiece, 2 * had)));
        const ssize_t got = ::read(file.number(), &content[had], content.size() - had);
        if (got == 0 || (got < 0 && errno != EINTR)) {
            return got == 0 ? ENODATA : errno;
        }
        content.resize(had + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        const std::size_t hole = content.find(kHole, had - std::min(had, kHole.size()));
        if (hole != std::string::npos) {
            content.resize(hole + kHole.size());
            break;
        }
    }
    return 0;
}

} // namespace common
