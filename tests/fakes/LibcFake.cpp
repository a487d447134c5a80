#include <algorithm>
#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

#include "FakePlatform.h"

// In place of the C library's.

/// As scripted in `reads`, then the kernel's.
extern "C" ssize_t read(int descriptor, void* buffer, size_t size) {
    platform().called("read");
    auto& reads = platform().reads;
    if (reads.empty()) {
        return syscall(SYS_read, descriptor, buffer, size);
    }
    const ssize_t most = reads.front();
    reads.pop_front();
    if (most < 0) {
        errno = static_cast<int>(-most);
        return -1;
    }
    return syscall(SYS_read, descriptor, buffer, std::min(size, static_cast<size_t>(most)));
}

/// No test waits.
extern "C" int usleep(useconds_t microseconds) {
    platform().record("usleep " + std::to_string(microseconds));
    platform().called("usleep");
    return 0;
}
