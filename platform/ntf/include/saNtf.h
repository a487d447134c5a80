#pragma once

/// SA Forum Notification Service, A.01 client interface: what a producer of alarms needs of it.
/// Every call may be made from any thread; calls on one notification must not overlap.

#include "saAis.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef SaUint64T SaNtfHandleT;
typedef SaUint64T SaNtfNotificationHandleT;
typedef SaUint64T SaNtfIdentifierT;
typedef SaUint32T SaNtfSubscriptionIdT;
typedef SaUint16T SaNtfElementIdT;

/// Variable data size that stands for the service's own limit, 32767 bytes a notification.
#define SA_NTF_ALLOC_SYSTEM_LIMIT (-1)

typedef enum {
    SA_NTF_TYPE_OBJECT_CREATE_DELETE = 0x1000,
    SA_NTF_TYPE_ATTRIBUTE_CHANGE = 0x2000,
    SA_NTF_TYPE_STATE_CHANGE = 0x3000,
    SA_NTF_TYPE_ALARM = 0x4000,
    SA_NTF_TYPE_SECURITY_ALARM = 0x5000
} SaNtfNotificationTypeT;

typedef enum {
    SA_NTF_OBJECT_NOTIFICATIONS_START = 0x1000,
    SA_NTF_OBJECT_CREATION,
    SA_NTF_OBJECT_DELETION,

    SA_NTF_ATTRIBUTE_NOTIFICATIONS_START = 0x2000,
    SA_NTF_ATTRIBUTE_ADDED,
    SA_NTF_ATTRIBUTE_REMOVED,
    SA_NTF_ATTRIBUTE_CHANGED,
    SA_NTF_ATTRIBUTE_RESET,

    SA_NTF_STATE_CHANGE_NOTIFICATIONS_START = 0x3000,
    SA_NTF_OBJECT_STATE_CHANGE,

    SA_NTF_ALARM_NOTIFICATIONS_START = 0x4000,
    SA_NTF_ALARM_COMMUNICATION,
    SA_NTF_ALARM_QOS,
    SA_NTF_ALARM_PROCESSING,
    SA_NTF_ALARM_EQUIPMENT,
    SA_NTF_ALARM_ENVIRONMENT,

    SA_NTF_SECURITY_ALARM_NOTIFICATIONS_START = 0x5000,
    SA_NTF_INTEGRITY_VIOLATION,
    SA_NTF_OPERATION_VIOLATION,
    SA_NTF_PHYSICAL_VIOLATION,
    SA_NTF_SECURITY_SERVICE_VIOLATION,
    SA_NTF_TIME_VIOLATION
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

/// The causes of ITU-T X.733 and X.736.
typedef enum {
    SA_NTF_ADAPTER_ERROR,
    SA_NTF_APPLICATION_SUBSYSTEM_FAILURE,
    SA_NTF_BANDWIDTH_REDUCED,
    SA_NTF_CALL_ESTABLISHMENT_ERROR,
    SA_NTF_COMMUNICATIONS_PROTOCOL_ERROR,
    SA_NTF_COMMUNICATIONS_SUBSYSTEM_FAILURE,
    SA_NTF_CONFIGURATION_OR_CUSTOMIZATION_ERROR,
    SA_NTF_CONGESTION,
    SA_NTF_CORRUPT_DATA,
    SA_NTF_CPU_CYCLES_LIMIT_EXCEEDED,
    SA_NTF_DATASET_OR_MODEM_ERROR,
    SA_NTF_DEGRADED_SIGNAL,
    SA_NTF_D_T_E,
    SA_NTF_ENCLOSURE_DOOR_OPEN,
    SA_NTF_EQUIPMENT_MALFUNCTION,
    SA_NTF_EXCESSIVE_VIBRATION,
    SA_NTF_FILE_ERROR,
    SA_NTF_FIRE_DETECTED,
    SA_NTF_FLOOD_DETECTED,
    SA_NTF_FRAMING_ERROR,
    SA_NTF_HEATING_OR_VENTILATION_OR_COOLING_SYSTEM_PROBLEM,
    SA_NTF_HUMIDITY_UNACCEPTABLE,
    SA_NTF_INPUT_OUTPUT_DEVICE_ERROR,
    SA_NTF_INPUT_DEVICE_ERROR,
    SA_NTF_L_A_N_ERROR,
    SA_NTF_LEAK_DETECTED,
    SA_NTF_LOCAL_NODE_TRANSMISSION_ERROR,
    SA_NTF_LOSS_OF_FRAME,
    SA_NTF_LOSS_OF_SIGNAL,
    SA_NTF_MATERIAL_SUPPLY_EXHAUSTED,
    SA_NTF_MULTIPLEXER_PROBLEM,
    SA_NTF_OUT_OF_MEMORY,
    SA_NTF_OUTPUT_DEVICE_ERROR,
    SA_NTF_PERFORMANCE_DEGRADED,
    SA_NTF_POWER_PROBLEM,
    SA_NTF_PRESSURE_UNACCEPTABLE,
    SA_NTF_PROCESSOR_PROBLEM,
    SA_NTF_PUMP_FAILURE,
    SA_NTF_QUEUE_SIZE_EXCEEDED,
    SA_NTF_RECEIVE_FAILURE,
    SA_NTF_RECEIVER_FAILURE,
    SA_NTF_REMOTE_NODE_TRANSMISSION_ERROR,
    SA_NTF_RESOURCE_AT_OR_NEARING_CAPACITY,
    SA_NTF_RESPONSE_TIME_EXCESSIVE,
    SA_NTF_RETRANSMISSION_RATE_EXCESSIVE,
    SA_NTF_SOFTWARE_ERROR,
    SA_NTF_SOFTWARE_PROGRAM_ABNORMALLY_TERMINATED,
    SA_NTF_SOFTWARE_PROGRAM_ERROR,
    SA_NTF_STORAGE_CAPACITY_PROBLEM,
    SA_NTF_TEMPERATURE_UNACCEPTABLE,
    SA_NTF_THRESHOLD_CROSSED,
    SA_NTF_TIMING_PROBLEM,
    SA_NTF_TOXIC_LEAK_DETECTED,
    SA_NTF_TRANSMIT_FAILURE,
    SA_NTF_TRANSMITTER_FAILURE,
    SA_NTF_UNDERLYING_RESOURCE_UNAVAILABLE,
    SA_NTF_VERSION_MISMATCH,
    SA_NTF_AUTHENTICATION_FAILURE,
    SA_NTF_BREACH_OF_CONFIDENTIALITY,
    SA_NTF_CABLE_TAMPER,
    SA_NTF_DELAYED_INFORMATION,
    SA_NTF_DENIAL_OF_SERVICE,
    SA_NTF_DUPLICATE_INFORMATION,
    SA_NTF_INFORMATION_MISSING,
    SA_NTF_INFORMATION_MODIFICATION_DETECTED,
    SA_NTF_INFORMATION_OUT_OF_SEQUENCE,
    SA_NTF_INTRUSION_DETECTION,
    SA_NTF_KEY_EXPIRED,
    SA_NTF_NON_REPUDIATION_FAILURE,
    SA_NTF_OUT_OF_HOURS_ACTIVITY,
    SA_NTF_OUT_OF_SERVICE,
    SA_NTF_PROCEDURAL_ERROR,
    SA_NTF_UNAUTHORIZED_ACCESS_ATTEMPT,
    SA_NTF_UNEXPECTED_INFORMATION,
    SA_NTF_UNSPECIFIED_REASON
} SaNtfProbableCauseT;

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

/// A received notification; only consumers look into it.
typedef struct SaNtfNotifications SaNtfNotificationsT;

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

/// Closes the handle and releases its notifications.
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

/// Finds the block that saNtfPtrValAllocate gave `value`.
SaAisErrorT saNtfPtrValGet(SaNtfNotificationHandleT notificationHandle, const SaNtfValueT* value,
                           void** dataPtr, SaUint16T* dataSize);

/// Checks the notification and sends it as it stands. It stays allocated.
SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT notificationHandle);

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT notificationHandle);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
