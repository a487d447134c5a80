/* Prints the alarms that the notification service has, the oldest first: what any program sees that
   knows the standard's header alone. Its argument, if any, is a part of the objects' names. */

#include <saNtf.h>
#include <stdio.h>
#include <stdlib.h>

static void require(SaAisErrorT result, const char* call) {
    if (result != SA_AIS_OK) {
        fprintf(stderr, "%s answers %d\n", call, (int)result);
        exit(1);
    }
}

static void printName(const char* field, const SaNameT* name) {
    printf("%s: %.*s\n", field, (int)name->length, (const char*)name->value);
}

static void printValue(const char* field, unsigned id, SaNtfValueTypeT type,
                       SaNtfNotificationHandleT notification, const SaNtfValueT* value) {
    void* text = NULL;
    SaUint16T size = 0;
    printf("%s %u: ", field, id);
    if (type == SA_NTF_VALUE_STRING &&
        saNtfPtrValGet(notification, value, &text, &size) == SA_AIS_OK) {
        printf("%.*s (%u bytes)\n", (int)size, (const char*)text, (unsigned)size);
    } else {
        printf("of type %d\n", (int)type);
    }
}

static void print(const SaNtfAlarmNotificationT* alarm) {
    const SaNtfNotificationHeaderT* header = &alarm->notificationHeader;
    unsigned i;
    printf("notification: %llu\n", *header->notificationId);
    printf("event time: %lld\n", *header->eventTime);
    printf("event type: %#x\n", (unsigned)*header->eventType);
    printName("object", header->notificationObject);
    printName("notifying object", header->notifyingObject);
    printf("class: %u:%u/%u\n", header->notificationClassId->vendorId,
           header->notificationClassId->majorId, header->notificationClassId->minorId);
    printf("severity: %d\n", (int)*alarm->perceivedSeverity);
    printf("probable cause: %d\n", (int)*alarm->probableCause);
    printf("trend: %d\n", (int)*alarm->trend);
    printf("threshold: %u\n", alarm->thresholdInformation->thresholdId);
    if (header->lengthAdditionalText != 0) {
        printf("text: %s (%u bytes)\n", header->additionalText, header->lengthAdditionalText);
    }
    for (i = 0; i < header->numCorrelatedNotifications; ++i) {
        printf("correlated: %llu\n", header->correlatedNotifications[i]);
    }
    for (i = 0; i < header->numAdditionalInfo; ++i) {
        const SaNtfAdditionalInfoT* info = &header->additionalInfo[i];
        printValue("info", info->infoId, info->infoType, alarm->notificationHandle,
                   &info->infoValue);
    }
    for (i = 0; i < alarm->numProposedRepairActions; ++i) {
        const SaNtfProposedRepairActionT* action = &alarm->proposedRepairActions[i];
        printValue("repair action", action->actionId, action->actionValueType,
                   alarm->notificationHandle, &action->actionValue);
    }
    printf("specific problems: %u, monitored attributes: %u\n\n", alarm->numSpecificProblems,
           alarm->numMonitoredAttributes);
}

int main(void) {
    SaVersionT version = {'A', 1, 1};
    SaNtfHandleT session;
    SaNtfAlarmNotificationFilterT filter;
    SaNtfNotificationTypeFilterHandlesT filters = {0, 0, 0, 0, 0};
    SaNtfSearchCriteriaT everything = {SA_NTF_SEARCH_ONLY_FILTER, 0, SA_NTF_IDENTIFIER_UNUSED};
    SaNtfReadHandleT reading;
    SaNtfNotificationsT read;
    SaAisErrorT result;

    require(saNtfInitialize(&session, NULL, &version), "saNtfInitialize");
    require(saNtfAlarmNotificationFilterAllocate(session, &filter, 0, 0, 0, 0, 0, 0, 0),
            "saNtfAlarmNotificationFilterAllocate");
    filters.alarmFilterHandle = filter.notificationFilterHandle;
    require(saNtfNotificationReadInitialize(everything, &filters, &reading),
            "saNtfNotificationReadInitialize");
    require(saNtfNotificationFilterFree(filter.notificationFilterHandle),
            "saNtfNotificationFilterFree");
    while ((result = saNtfNotificationReadNext(reading, SA_NTF_SEARCH_YOUNGER, &read)) ==
           SA_AIS_OK) {
        print(&read.notification.alarmNotification);
        require(saNtfNotificationFree(read.notification.alarmNotification.notificationHandle),
                "saNtfNotificationFree");
    }
    require(result == SA_AIS_ERR_NOT_EXIST ? SA_AIS_OK : result, "saNtfNotificationReadNext");
    require(saNtfNotificationReadFinalize(reading), "saNtfNotificationReadFinalize");
    require(saNtfFinalize(session), "saNtfFinalize");
    return 0;
}
