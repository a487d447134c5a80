#pragma once

#include <optional>

#include <saNtf.h>

namespace dolqctl {

/// What the notification service answered to the latest alarm that this process sent; nothing when
/// it was never asked. The traces tell the reason, but not the outcome: several failure traces go
/// with alarms that are sent all the same, and a platform's own trace backend keeps them to itself.
std::optional<SaAisErrorT> latestSendAnswer();

} // namespace dolqctl
