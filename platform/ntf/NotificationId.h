#pragma once

#include <cstdint>

namespace platform::ntf {

/// A new notification id: 40 random bits that the process drew, then a 24-bit count that carries
/// into them. Ids increase within a process; two processes that share one are as unlikely as 40
/// bits allow, also after restarts, forks and between containers. Thread safe; never 0.
std::uint64_t nextNotificationId();

} // namespace platform::ntf
