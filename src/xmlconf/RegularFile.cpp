#include "RegularFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dolq::xmlconf {

namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace

int readRegularFile(const std::string& path, std::size_t maxSize, std::string& content) {
    // O_NONBLOCK: opening a FIFO without a writer does not wait.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maxSize) {
        return EFBIG;
    }
    content.resize(size);
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t got = ::read(file.get(), &content[filled], size - filled);
        if (got < 0 && errno != EINTR) {
            return errno;
        }
        if (got == 0) {
            break; // it has shrunk meanwhile
        }
        filled += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    content.resize(filled);
    return 0;
}

} // namespace dolq::xmlconf
