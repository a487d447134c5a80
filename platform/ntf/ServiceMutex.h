#pragma once

#include <mutex>

namespace platform::ntf {

/// The service's only lock. It is never held over a call that may wait, and a forked child gets it
/// unlocked, whatever the parent's other threads were doing.
extern std::mutex serviceMutex;

} // namespace platform::ntf
