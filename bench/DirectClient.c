#include "DirectClient.h"

#include <string.h>

static void fillName(SaNameT* name, const char* text) {
    name->length = (SaUint16T)strlen(text);
    memcpy(name->value, text, name->length);
    memset(name->value + name->length, 0, sizeof name->value - name->length);
}

static SaAisErrorT fillValue(SaNtfNotificationHandleT handle, const char* text,
                             SaNtfValueT* value) {
    const SaUint16T size = (SaUint16T)(strlen(text) + 1);
    void* block = NULL;
    const SaAisErrorT result = saNtfPtrValAllocate(handle, size, &block, value);
    if (result == SA_AIS_OK) {
        memcpy(block, text, size);
    }
    return result;
}

static SaAisErrorT fill(SaNtfAlarmNotificationT* notification, const DirectAlarm* alarm) {
    const SaNtfNotificationHandleT handle = notification->notificationHandle;
    SaNtfNotificationHeaderT* header = &notification->notificationHeader;
    SaAisErrorT result = SA_AIS_OK;
    SaUint16T i;
    *notification->perceivedSeverity = alarm->severity;
    *notification->probableCause = SA_NTF_UNSPECIFIED_REASON;
    *notification->trend = SA_NTF_TREND_NO_CHANGE;
    notification->thresholdInformation->thresholdId = 255;
    *header->eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
    fillName(header->notificationObject, alarm->object);
    fillName(header->notifyingObject, alarm->object);
    header->notificationClassId->vendorId = RUXA_DOLQ_VENDOR_ID;
    header->notificationClassId->majorId = alarm->majorId;
    header->notificationClassId->minorId = alarm->minorId;
    strcpy(header->additionalText, alarm->text);
    if (alarm->programGroup != NULL) {
        SaNtfProposedRepairActionT* action = &notification->proposedRepairActions[0];
        action->actionId = 0;
        action->actionValueType = SA_NTF_VALUE_STRING;
        result = fillValue(handle, alarm->programGroup, &action->actionValue);
    }
    for (i = 0; i < alarm->infoCount && result == SA_AIS_OK; ++i) {
        header->additionalInfo[i].infoType = SA_NTF_VALUE_STRING;
        result = fillValue(handle, alarm->info[i], &header->additionalInfo[i].infoValue);
    }
    return result;
}

SaAisErrorT sendDirectly(SaNtfHandleT session, const DirectAlarm* alarm) {
    SaNtfAlarmNotificationT notification;
    SaAisErrorT result;
    SaAisErrorT freed;
    memset(&notification, 0, sizeof notification);
    result = saNtfAlarmNotificationAllocate(
        session, &notification, 0, (SaUint16T)(strlen(alarm->text) + 1), alarm->infoCount, 0, 0,
        alarm->programGroup != NULL ? 1 : 0, SA_NTF_ALLOC_SYSTEM_LIMIT);
    if (result != SA_AIS_OK) {
        return result;
    }
    result = fill(&notification, alarm);
    if (result == SA_AIS_OK) {
        result = saNtfNotificationSend(notification.notificationHandle);
    }
    freed = saNtfNotificationFree(notification.notificationHandle);
    return result == SA_AIS_OK ? freed : result;
}
