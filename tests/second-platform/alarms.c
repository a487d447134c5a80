/* Prints the alarms that the notification service has, the oldest first: what any program sees that
   knows the standard's header alone. */

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

static void printString(const char* field, unsigned id, SaNtfNotificationHandleT notification,
                        const SaNtfValueT* value) {
    void* text = NULL;
    SaUint16T size = 0;
    require(saNtfPtrValGet(notification, value, &text, &size), "saNtfPtrValGet");
    printf("%s %u: %.*s (%u bytes)\n", field, id, (int)size, (const char*)text, (unsigned)size);
}

static void print(const SaNtfAlarmNotificationT* alarm) {
    const SaNtfNotificationHeaderT* header = &alarm->notificationHeader;
    unsigned i;
    printf("notification: %llu\nevent type: %#x\n", *header->notificationId,
           (unsigned)*header->eventType);
    printName("object", header->notificationObject);
    printName("notifying object", header->notifyingObject);
    printf("class: %u:%u/%u\n", header->notificationClassId->vendorId,
           header->notificationClassId->majorId, header->notificationClassId->minorId);
    printf("severity: %d\nprobable cause: %d\ntrend: %d\nthreshold: %u\ntext: %s (%u bytes)\n",
           (int)*alarm->perceivedSeverity, (int)*alarm->probableCause, (int)*alarm->trend,
           alarm->thresholdInformation->thresholdId, header->additionalText,
           header->lengthAdditionalText);
    for (i = 0; i < header->numAdditionalInfo; ++i) {
        printString("info", header->additionalInfo[i].infoId, alarm->notificationHandle,
                    &header->additionalInfo[i].infoValue);
    }
    for (i = 0; i < alarm->numProposedRepairActions; ++i) {
        printString("repair action", alarm->proposedRepairActions[i].actionId,
                    alarm->notificationHandle, &alarm->proposedRepairActions[i].actionValue);
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
