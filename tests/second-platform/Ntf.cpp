#include <list>
#include <vector>

#include <saNtf.h>

#include "Record.h"

namespace {

constexpr SaTimeT kEventTimeAsAllocated = 7;

/// All that one notification points to. Its handle is its address.
struct Notification {
    SaNtfAlarmNotificationT* alarm;
    SaNtfEventTypeT eventType;
    SaNameT notificationObject, notifyingObject;
    SaNtfClassIdT classId;
    SaTimeT eventTime;
    SaNtfIdentifierT id;
    SaNtfProbableCauseT cause;
    SaNtfSeverityT severity;
    SaNtfSeverityTrendT trend;
    SaNtfThresholdInformationT threshold;
    std::vector<char> text;
    std::vector<SaNtfAdditionalInfoT> info;
    std::vector<SaNtfProposedRepairActionT> actions;
    std::list<std::vector<char>> values;
};

Notification* at(SaNtfNotificationHandleT handle) {
    return reinterpret_cast<Notification*>(handle);
}

} // namespace

SaAisErrorT saNtfInitialize(SaNtfHandleT* ntfHandle, const SaNtfCallbacksT*, SaVersionT*) {
    record("ntf initialize");
    *ntfHandle = 2;
    return SA_AIS_OK;
}

SaAisErrorT saNtfFinalize(SaNtfHandleT) {
    record("ntf finalize");
    return SA_AIS_OK;
}

SaAisErrorT saNtfAlarmNotificationAllocate(SaNtfHandleT, SaNtfAlarmNotificationT* notification,
                                           SaUint16T, SaUint16T lengthAdditionalText,
                                           SaUint16T numAdditionalInfo, SaUint16T, SaUint16T,
                                           SaUint16T numProposedRepairActions, SaInt16T) {
    auto* const made = new Notification{};
    made->alarm = notification;
    made->eventTime = kEventTimeAsAllocated;
    made->text.resize(lengthAdditionalText);
    made->info.resize(numAdditionalInfo);
    made->actions.resize(numProposedRepairActions);
    *notification = {};
    notification->notificationHandle = reinterpret_cast<SaNtfNotificationHandleT>(made);
    SaNtfNotificationHeaderT& header = notification->notificationHeader;
    header.eventType = &made->eventType;
    header.notificationObject = &made->notificationObject;
    header.notifyingObject = &made->notifyingObject;
    header.notificationClassId = &made->classId;
    header.eventTime = &made->eventTime;
    header.notificationId = &made->id;
    header.additionalText = made->text.data();
    header.additionalInfo = made->info.data();
    notification->probableCause = &made->cause;
    notification->perceivedSeverity = &made->severity;
    notification->trend = &made->trend;
    notification->thresholdInformation = &made->threshold;
    notification->proposedRepairActions = made->actions.data();
    return SA_AIS_OK;
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT handle, SaUint16T dataSize, void** dataPtr,
                                SaNtfValueT*) {
    *dataPtr = at(handle)->values.emplace_back(dataSize).data();
    return SA_AIS_OK;
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT handle) {
    const Notification& sent = *at(handle);
    std::string line = "ntf send ";
    line.append(reinterpret_cast<const char*>(sent.notificationObject.value),
                sent.notificationObject.length);
    line += " severity " + std::to_string(sent.severity) + " class " +
            std::to_string(sent.classId.majorId) + '/' + std::to_string(sent.classId.minorId) +
            " text '" + sent.text.data() + '\'';
    for (const std::vector<char>& value : sent.values) {
        line += std::string(" info ") + value.data();
    }
    line += sent.eventTime == kEventTimeAsAllocated ? " time as-allocated"
            : sent.eventTime == SA_TIME_UNKNOWN     ? " time unknown"
                                                    : " time wrong";
    record(line);
    return SA_AIS_OK;
}

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT handle) {
    delete at(handle);
    return SA_AIS_OK;
}
