#include "platform/ntf/NotificationId.h"

#include <atomic>
#include <cerrno>
#include <system_error>

#include <pthread.h>
#include <unistd.h>

namespace platform::ntf {

namespace {

std::atomic<std::uint64_t> lastId{0}; // 0: not drawn yet

// A forked child must not repeat its parent's ids.
[[maybe_unused]] const int kForkHandler = pthread_atfork(nullptr, nullptr, [] { lastId = 0; });

} // namespace

std::uint64_t nextNotificationId() {
    constexpr unsigned kCountBits = 24;
    if (lastId == 0) {
        std::uint64_t random = 0;
        if (::getentropy(&random, sizeof random) != 0) {
            throw std::system_error(errno, std::generic_category(), "getentropy");
        }
        std::uint64_t none = 0;
        lastId.compare_exchange_strong(none, random << kCountBits);
    }
    return ++lastId;
}

} // namespace platform::ntf
