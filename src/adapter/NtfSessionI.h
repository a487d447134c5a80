#pragma once

#include "adapter/NotificationData.h"

namespace dolq {

/// The adapter's view of the notification service. Alarms leave the library through this alone.
class NtfSessionI {
public:
    virtual ~NtfSessionI() = default;

    /// Sends one alarm, keeping nothing of `data`. A failure ends in a trace, never at the caller.
    virtual void sendNotification(const NotificationData& data) = 0;
};

} // namespace dolq
