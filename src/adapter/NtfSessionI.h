#pragma once

#include "adapter/NotificationData.h"

namespace dolq {

/// The way alarms leave the library.
class NtfSessionI {
public:
    virtual ~NtfSessionI() = default;

    /// Sends one alarm, keeping nothing of `data`. A failure ends in a trace, never at the caller.
    virtual void sendNotification(const NotificationData& data) = 0;
};

} // namespace dolq
