#pragma once

#include "ntf/NtfI.h"

namespace dolq {

/// Forwards every call unchanged to the client library of the notification service.
class NtfImpl final : public NtfI {
public:
    SaAisErrorT initialize(SaNtfHandleT* ntfHandle, const SaNtfCallbacksT* callbacks,
                           SaVersionT* version) override;
    SaAisErrorT
    alarmNotificationAllocate(SaNtfHandleT ntfHandle, SaNtfAlarmNotificationT* notification,
                              SaUint16T numCorrelatedNotifications, SaUint16T lengthAdditionalText,
                              SaUint16T numAdditionalInfo, SaUint16T numSpecificProblems,
                              SaUint16T numMonitoredAttributes, SaUint16T numProposedRepairActions,
                              SaInt16T variableDataSize) override;
    SaAisErrorT ptrValAllocate(SaNtfNotificationHandleT notificationHandle, SaUint16T dataSize,
                               void** dataPtr, SaNtfValueT* value) override;
    SaAisErrorT notificationSend(SaNtfNotificationHandleT notificationHandle) override;
    SaAisErrorT notificationFree(SaNtfNotificationHandleT notificationHandle) override;
    SaAisErrorT finalize(SaNtfHandleT ntfHandle) override;
};

} // namespace dolq
