// All that the library calls of the notification service. Nothing is added to the calls, neither
// attempts nor traces nor conversions: the NtfI of a test then replaces the service alone.

#include "ntf/NtfImpl.h"

namespace dolq {

SaAisErrorT NtfImpl::initialize(SaNtfHandleT* ntfHandle, const SaNtfCallbacksT* callbacks,
                                SaVersionT* version) {
    return saNtfInitialize(ntfHandle, callbacks, version);
}

SaAisErrorT
NtfImpl::alarmNotificationAllocate(SaNtfHandleT ntfHandle, SaNtfAlarmNotificationT* notification,
                                   SaUint16T numCorrelatedNotifications,
                                   SaUint16T lengthAdditionalText, SaUint16T numAdditionalInfo,
                                   SaUint16T numSpecificProblems, SaUint16T numMonitoredAttributes,
                                   SaUint16T numProposedRepairActions, SaInt16T variableDataSize) {
    return saNtfAlarmNotificationAllocate(ntfHandle, notification, numCorrelatedNotifications,
                                          lengthAdditionalText, numAdditionalInfo,
                                          numSpecificProblems, numMonitoredAttributes,
                                          numProposedRepairActions, variableDataSize);
}

SaAisErrorT NtfImpl::ptrValAllocate(SaNtfNotificationHandleT notificationHandle, SaUint16T dataSize,
                                    void** dataPtr, SaNtfValueT* value) {
    return saNtfPtrValAllocate(notificationHandle, dataSize, dataPtr, value);
}

SaAisErrorT NtfImpl::notificationSend(SaNtfNotificationHandleT notificationHandle) {
    return saNtfNotificationSend(notificationHandle);
}

SaAisErrorT NtfImpl::notificationFree(SaNtfNotificationHandleT notificationHandle) {
    return saNtfNotificationFree(notificationHandle);
}

SaAisErrorT NtfImpl::finalize(SaNtfHandleT ntfHandle) { return saNtfFinalize(ntfHandle); }

} // namespace dolq
