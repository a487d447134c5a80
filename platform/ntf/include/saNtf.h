#pragma once

/// SA Forum Notification Service, A.01 client interface: what a producer and a reader of alarms
/// need of it. Every call may be made from any thread; calls on one notification, filter or reading
/// must not overlap.

#include "saAis.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef SaUint64T SaNtfHandleT;
typedef SaUint64T SaNtfNotificationHandleT;
typedef SaUint64T SaNtfNotificationFilterHandleT;
typedef SaUint64T SaNtfReadHandleT;
typedef SaUint64T SaNtfIdentifierT;
typedef SaUint32T SaNtfSubscriptionIdT;
typedef SaUint16T SaNtfElementIdT;

/// Variable data size that stands for the service's own limit, 32767 bytes a notification.
#define SA_NTF_ALLOC_SYSTEM_LIMIT (-1)

#define SA_NTF_FILTER_HANDLE_NULL ((SaNtfNotificationFilterHandleT)0)
#define SA_NTF_IDENTIFIER_UNUSED ((SaNtfIdentifierT)0)

typedef enum {
    SA_NTF_TYPE_OBJECT_CREATE_DELETE = 0x1000,
    SA_NTF_TYPE_ATTRIBUTE_CHANGE = 0x2000,
    SA_NTF_TYPE_STATE_CHANGE = 0x3000,
    SA_NTF_TYPE_ALARM = 0x4000,
    SA_NTF_TYPE_SECURITY_ALARM = 0x5000
} SaNtfNotificationTypeT;

typedef enum {
    SA_NTF_ALARM_NOTIFICATIONS_START = 0x4000,
    SA_NTF_ALARM_COMMUNICATION,
    SA_NTF_ALARM_QOS,
    SA_NTF_ALARM_PROCESSING,
    SA_NTF_ALARM_EQUIPMENT,
    SA_NTF_ALARM_ENVIRONMENT
} SaNtfEventTypeT;

/// What a producer's class of notifications is called: the vendor's enterprise number and two
/// numbers of its choice.
typedef struct {
    SaUint32T vendorId;
    SaUint16T majorId;
    SaUint16T minorId;
} SaNtfClassIdT;

typedef enum {
    SA_NTF_VALUE_UINT8,
    SA_NTF_VALUE_INT8,
    SA_NTF_VALUE_UINT16,
    SA_NTF_VALUE_INT16,
    SA_NTF_VALUE_UINT32,
    SA_NTF_VALUE_INT32,
    SA_NTF_VALUE_FLOAT,
    SA_NTF_VALUE_UINT64,
    SA_NTF_VALUE_INT64,
    SA_NTF_VALUE_DOUBLE,
    SA_NTF_VALUE_LDAP_NAME,
    SA_NTF_VALUE_STRING,
    SA_NTF_VALUE_IPADDRESS,
    SA_NTF_VALUE_BINARY,
    SA_NTF_VALUE_ARRAY
} SaNtfValueTypeT;

/// One value. The types from SA_NTF_VALUE_LDAP_NAME on keep their bytes outside it, in a block of
/// the notification that saNtfPtrValAllocate gives.
typedef union {
    SaUint8T uint8Val;
    SaInt8T int8Val;
    SaUint16T uint16Val;
    SaInt16T int16Val;
    SaUint32T uint32Val;
    SaInt32T int32Val;
    SaFloatT floatVal;
    SaUint64T uint64Val;
    SaInt64T int64Val;
    SaDoubleT doubleVal;
    struct {
        SaUint16T dataOffset;
        SaUint16T dataSize;
    } ptrVal;
    struct {
        SaUint16T arrayOffset;
        SaUint16T numElements;
        SaUint16T elementSize;
    } arrayVal;
} SaNtfValueT;

typedef struct {
    SaNtfElementIdT infoId;
    SaNtfValueTypeT infoType;
    SaNtfValueT infoValue;
} SaNtfAdditionalInfoT;

/// What all types of notification have in common. The pointers lead to the service's memory.
typedef struct {
    SaNtfEventTypeT* eventType;
    SaNameT* notificationObject;
    SaNameT* notifyingObject;
    SaNtfClassIdT* notificationClassId;
    SaTimeT* eventTime;
    SaUint16T numCorrelatedNotifications;
    SaUint16T lengthAdditionalText; ///< terminating NUL included
    SaUint16T numAdditionalInfo;
    SaNtfIdentifierT* notificationId;
    SaNtfIdentifierT* correlatedNotifications;
    SaStringT additionalText;
    SaNtfAdditionalInfoT* additionalInfo;
} SaNtfNotificationHeaderT;

/// The causes of ITU-T X.733 and X.736, numbered from 0 to 74; the others have no user here.
typedef enum { SA_NTF_ADAPTER_ERROR = 0, SA_NTF_UNSPECIFIED_REASON = 74 } SaNtfProbableCauseT;

typedef enum {
    SA_NTF_SEVERITY_CLEARED,
    SA_NTF_SEVERITY_INDETERMINATE,
    SA_NTF_SEVERITY_WARNING,
    SA_NTF_SEVERITY_MINOR,
    SA_NTF_SEVERITY_MAJOR,
    SA_NTF_SEVERITY_CRITICAL
} SaNtfSeverityT;

typedef enum {
    SA_NTF_TREND_MORE_SEVERE,
    SA_NTF_TREND_NO_CHANGE,
    SA_NTF_TREND_LESS_SEVERE
} SaNtfSeverityTrendT;

typedef struct {
    SaNtfElementIdT thresholdId;
    SaNtfValueTypeT thresholdValueType;
    SaNtfValueT thresholdValue;
    SaNtfValueT thresholdHysteresis;
    SaNtfValueT observedValue;
    SaTimeT armTime;
} SaNtfThresholdInformationT;

typedef struct {
    SaNtfElementIdT actionId;
    SaNtfValueTypeT actionValueType;
    SaNtfValueT actionValue;
} SaNtfProposedRepairActionT;

typedef struct {
    SaNtfElementIdT attributeId;
    SaNtfValueTypeT attributeType;
    SaNtfValueT attributeValue;
} SaNtfAttributeT;

typedef struct {
    SaNtfElementIdT problemId;
    SaNtfClassIdT problemClassId;
    SaNtfValueTypeT problemType;
    SaNtfValueT problemValue;
} SaNtfSpecificProblemT;

typedef struct {
    SaNtfNotificationHandleT notificationHandle;
    SaNtfNotificationHeaderT notificationHeader;
    SaUint16T numSpecificProblems;
    SaUint16T numMonitoredAttributes;
    SaUint16T numProposedRepairActions;
    SaNtfProbableCauseT* probableCause;
    SaNtfSpecificProblemT* specificProblems;
    SaNtfSeverityT* perceivedSeverity;
    SaNtfSeverityTrendT* trend;
    SaNtfThresholdInformationT* thresholdInformation;
    SaNtfAttributeT* monitoredAttributes;
    SaNtfProposedRepairActionT* proposedRepairActions;
} SaNtfAlarmNotificationT;

/// A notification that was read. The standard's other types are smaller members of the union.
typedef struct {
    SaNtfNotificationTypeT notificationType;
    union {
        SaNtfAlarmNotificationT alarmNotification;
    } notification;
} SaNtfNotificationsT;

typedef enum {
    SA_NTF_SEARCH_BEFORE_OR_AT_TIME = 1,
    SA_NTF_SEARCH_AT_TIME,
    SA_NTF_SEARCH_AT_OR_AFTER_TIME,
    SA_NTF_SEARCH_BEFORE_TIME,
    SA_NTF_SEARCH_AFTER_TIME,
    SA_NTF_SEARCH_NOTIFICATION_ID,
    SA_NTF_SEARCH_ONLY_FILTER
} SaNtfSearchModeT;

typedef enum { SA_NTF_SEARCH_OLDER = 1, SA_NTF_SEARCH_YOUNGER } SaNtfSearchDirectionT;

typedef struct {
    SaNtfSearchModeT searchMode;
    SaTimeT eventTime;
    SaNtfIdentifierT notificationId;
} SaNtfSearchCriteriaT;

/// What a notification must have to be read: one of the values of each array that is not empty. The
/// pointers lead to the service's memory.
typedef struct {
    SaUint16T numEventTypes;
    SaNtfEventTypeT* eventTypes;
    SaUint16T numNotificationObjects;
    SaNameT* notificationObjects; ///< each matches every name in which it occurs, anywhere
    SaUint16T numNotifyingObjects;
    SaNameT* notifyingObjects;
    SaUint16T numNotificationClassIds;
    SaNtfClassIdT* notificationClassIds;
} SaNtfNotificationFilterHeaderT;

typedef struct {
    SaNtfNotificationFilterHandleT notificationFilterHandle;
    SaNtfNotificationFilterHeaderT notificationFilterHeader;
    SaUint16T numProbableCauses;
    SaUint16T numPerceivedSeverities;
    SaUint16T numTrends;
    SaNtfProbableCauseT* probableCauses;
    SaNtfSeverityT* perceivedSeverities;
    SaNtfSeverityTrendT* trends;
} SaNtfAlarmNotificationFilterT;

/// A filter for each type of notification that is to be read; SA_NTF_FILTER_HANDLE_NULL: none is.
typedef struct {
    SaNtfNotificationFilterHandleT objectCreateDeleteFilterHandle;
    SaNtfNotificationFilterHandleT attributeChangeFilterHandle;
    SaNtfNotificationFilterHandleT stateChangeFilterHandle;
    SaNtfNotificationFilterHandleT alarmFilterHandle;
    SaNtfNotificationFilterHandleT securityAlarmFilterHandle;
} SaNtfNotificationTypeFilterHandlesT;

typedef void (*SaNtfNotificationCallbackT)(SaNtfSubscriptionIdT subscriptionId,
                                           const SaNtfNotificationsT* notification);
typedef void (*SaNtfNotificationDiscardedCallbackT)(
    SaNtfSubscriptionIdT subscriptionId, SaNtfNotificationTypeT notificationType,
    SaUint32T numberDiscarded, const SaNtfIdentifierT* discardedNotificationIdentifiers);

typedef struct {
    SaNtfNotificationCallbackT saNtfNotificationCallback;
    SaNtfNotificationDiscardedCallbackT saNtfNotificationDiscardedCallback;
} SaNtfCallbacksT;

/// Opens a handle of its own. `callbacks` may be null. `version` is what the caller was built for.
SaAisErrorT saNtfInitialize(SaNtfHandleT* ntfHandle, const SaNtfCallbacksT* callbacks,
                            SaVersionT* version);

/// Closes the handle and releases its notifications, filters and readings.
SaAisErrorT saNtfFinalize(SaNtfHandleT ntfHandle);

/// Fills `notification` with a new handle and pointers to the service's memory, which lives until
/// saNtfNotificationFree or saNtfFinalize. `lengthAdditionalText` counts the terminating NUL;
/// `variableDataSize` limits the bytes of all its values together.
SaAisErrorT
saNtfAlarmNotificationAllocate(SaNtfHandleT ntfHandle, SaNtfAlarmNotificationT* notification,
                               SaUint16T numCorrelatedNotifications, SaUint16T lengthAdditionalText,
                               SaUint16T numAdditionalInfo, SaUint16T numSpecificProblems,
                               SaUint16T numMonitoredAttributes, SaUint16T numProposedRepairActions,
                               SaInt16T variableDataSize);

/// Gives `value` a block of `dataSize` bytes at `*dataPtr`, owned by the notification. Fill it
/// before asking for the next one: a service may move the blocks.
SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT notificationHandle, SaUint16T dataSize,
                                void** dataPtr, SaNtfValueT* value);

/// Checks the notification and sends it as it stands. It stays allocated.
SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT notificationHandle);

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT notificationHandle);

/// Fills `notificationFilter` with a new handle and pointers to zeroed arrays, which live until
/// saNtfNotificationFilterFree or saNtfFinalize.
SaAisErrorT saNtfAlarmNotificationFilterAllocate(
    SaNtfHandleT ntfHandle, SaNtfAlarmNotificationFilterT* notificationFilter,
    SaUint16T numEventTypes, SaUint16T numNotificationObjects, SaUint16T numNotifyingObjects,
    SaUint16T numNotificationClassIds, SaUint16T numProbableCauses,
    SaUint16T numPerceivedSeverities, SaUint16T numTrends);

SaAisErrorT saNtfNotificationFilterFree(SaNtfNotificationFilterHandleT notificationFilterHandle);

/// Begins a reading of the notifications that the service has at this moment. The filters are taken
/// as they are now and may be freed.
SaAisErrorT saNtfNotificationReadInitialize(
    SaNtfSearchCriteriaT searchCriteria,
    const SaNtfNotificationTypeFilterHandlesT* notificationFilterHandles,
    SaNtfReadHandleT* readHandle);

/// Fills `notification` with the next one, the caller's own until saNtfNotificationFree of its
/// handle. SA_AIS_ERR_NOT_EXIST behind the last one.
SaAisErrorT saNtfNotificationReadNext(SaNtfReadHandleT readHandle,
                                      SaNtfSearchDirectionT searchDirection,
                                      SaNtfNotificationsT* notification);

SaAisErrorT saNtfNotificationReadFinalize(SaNtfReadHandleT readHandle);

/// The block of a value of a notification: `value` must point into the notification itself.
SaAisErrorT saNtfPtrValGet(SaNtfNotificationHandleT notificationHandle, const SaNtfValueT* value,
                           void** dataPtr, SaUint16T* dataSize);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
