#pragma once

#include <mutex>

#include <pthread.h>

namespace platform::ntf {

/// The service's only lock. It is never held over a call that may wait, and a forked child gets it
/// unlocked, whatever the parent's other threads were doing.
inline std::mutex serviceMutex;
[[maybe_unused]] inline const int kForkHandlers = pthread_atfork(
    [] { serviceMutex.lock(); }, [] { serviceMutex.unlock(); }, [] { serviceMutex.unlock(); });

} // namespace platform::ntf
