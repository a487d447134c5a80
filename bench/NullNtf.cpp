// An NTF service that costs nothing: it hands out the same memory for every notification of a
// thread and sends nowhere. What is left is the cost of the caller. A program that holds these
// functions uses them instead of the client library's.

#include <algorithm>
#include <cstddef>

#include <saNtf.h>

namespace {

constexpr SaNtfHandleT kHandle = 1;
constexpr std::size_t kEntries = 16;
constexpr std::size_t kTextBytes = 1024;
constexpr std::size_t kValueBytes = 32767;

struct Memory {
    SaNtfEventTypeT eventType;
    SaNameT notificationObject;
    SaNameT notifyingObject;
    SaNtfClassIdT classId;
    SaTimeT eventTime;
    SaNtfIdentifierT notificationId;
    char additionalText[kTextBytes];
    SaNtfAdditionalInfoT additionalInfo[kEntries];
    SaNtfProbableCauseT probableCause;
    SaNtfSeverityT severity;
    SaNtfSeverityTrendT trend;
    SaNtfThresholdInformationT threshold;
    SaNtfProposedRepairActionT repairActions[kEntries];
    std::byte values[kValueBytes];
    std::size_t usedValueBytes;
};

thread_local Memory memory;

} // namespace

SaAisErrorT saNtfInitialize(SaNtfHandleT* handle, const SaNtfCallbacksT*, SaVersionT*) {
    *handle = kHandle;
    return SA_AIS_OK;
}

SaAisErrorT saNtfFinalize(SaNtfHandleT) { return SA_AIS_OK; }

SaAisErrorT saNtfAlarmNotificationAllocate(SaNtfHandleT, SaNtfAlarmNotificationT* notification,
                                           SaUint16T, SaUint16T textLength, SaUint16T infoCount,
                                           SaUint16T, SaUint16T, SaUint16T actionCount, SaInt16T) {
    if (textLength > kTextBytes || std::max(infoCount, actionCount) > kEntries) {
        return SA_AIS_ERR_NO_SPACE;
    }
    Memory& own = memory;
    own.usedValueBytes = 0;
    notification->notificationHandle = kHandle;
    SaNtfNotificationHeaderT& header = notification->notificationHeader;
    header.eventType = &own.eventType;
    header.notificationObject = &own.notificationObject;
    header.notifyingObject = &own.notifyingObject;
    header.notificationClassId = &own.classId;
    header.eventTime = &own.eventTime;
    header.notificationId = &own.notificationId;
    header.additionalText = own.additionalText;
    header.additionalInfo = own.additionalInfo;
    notification->probableCause = &own.probableCause;
    notification->perceivedSeverity = &own.severity;
    notification->trend = &own.trend;
    notification->thresholdInformation = &own.threshold;
    notification->proposedRepairActions = own.repairActions;
    return SA_AIS_OK;
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT, SaUint16T size, void** block,
                                SaNtfValueT*) {
    Memory& own = memory;
    if (size > kValueBytes - own.usedValueBytes) {
        return SA_AIS_ERR_NO_SPACE;
    }
    *block = own.values + own.usedValueBytes;
    own.usedValueBytes += size;
    return SA_AIS_OK;
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT) { return SA_AIS_OK; }

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT) { return SA_AIS_OK; }
