#include "platform/ntf/NotificationId.h"

#include <cerrno>
#include <mutex>
#include <system_error>

#include <unistd.h>

namespace platform::ntf {

std::uint64_t nextNotificationId() {
    constexpr unsigned kCountBits = 24;
    static std::mutex mutex;
    static std::uint64_t lastId = 0;
    static pid_t drawnBy = 0;

    const std::lock_guard<std::mutex> lock(mutex);
    if (drawnBy != ::getpid()) { // first use, or a forked child that must not repeat its parent
        std::uint64_t random = 0;
        if (::getentropy(&random, sizeof random) != 0) {
            throw std::system_error(errno, std::generic_category(), "getentropy");
        }
        lastId = random << kCountBits;
        drawnBy = ::getpid();
    }
    return ++lastId;
}

} // namespace platform::ntf
