#pragma once

#include <saNtf.h>

namespace dolq {

/// The functions of the standard's client library (saNtf) that the session calls, one operation for
/// each: the place where a test or another service takes over. Results are the service's own; the
/// session repeats a call, not this. The standard's counts and sizes have 16 bits: longer ones are
/// cut before.
class NtfI {
public:
    virtual ~NtfI() = default;

    virtual SaAisErrorT initialize(SaNtfHandleT* ntfHandle, const SaNtfCallbacksT* callbacks,
                                   SaVersionT* version) = 0;
    /// Makes the notification's fields, of the sizes given here for good. `variableDataSize` is
    /// what its values, which come one by one, may take together.
    virtual SaAisErrorT
    alarmNotificationAllocate(SaNtfHandleT ntfHandle, SaNtfAlarmNotificationT* notification,
                              SaUint16T numCorrelatedNotifications, SaUint16T lengthAdditionalText,
                              SaUint16T numAdditionalInfo, SaUint16T numSpecificProblems,
                              SaUint16T numMonitoredAttributes, SaUint16T numProposedRepairActions,
                              SaInt16T variableDataSize) = 0;
    /// Points `dataPtr` at `dataSize` bytes for one value, which belong to the notification.
    virtual SaAisErrorT ptrValAllocate(SaNtfNotificationHandleT notificationHandle,
                                       SaUint16T dataSize, void** dataPtr, SaNtfValueT* value) = 0;
    virtual SaAisErrorT notificationSend(SaNtfNotificationHandleT notificationHandle) = 0;
    virtual SaAisErrorT notificationFree(SaNtfNotificationHandleT notificationHandle) = 0;
    virtual SaAisErrorT finalize(SaNtfHandleT ntfHandle) = 0;
};

} // namespace dolq
