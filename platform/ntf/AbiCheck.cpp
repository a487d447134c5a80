// The layouts that every client of the standard's A.01 interface on x86-64 is compiled for: a
// change here is a client reading the wrong bytes.

#include <cstddef>

#include <saNtf.h>

namespace {

template <typename T, std::size_t Size, std::size_t Align> constexpr bool hasLayout() {
    return sizeof(T) == Size && alignof(T) == Align;
}

#define SIZE_AND_ALIGNMENT(type, size, alignment)                                                  \
    static_assert(hasLayout<type, size, alignment>(), "layout of " #type)
#define FIELD(type, field, offset)                                                                 \
    static_assert(offsetof(type, field) == (offset), "offset of " #type "::" #field)

SIZE_AND_ALIGNMENT(SaInt16T, 2, 2);
SIZE_AND_ALIGNMENT(SaUint16T, 2, 2);
SIZE_AND_ALIGNMENT(SaStringT, 8, 8);
SIZE_AND_ALIGNMENT(SaTimeT, 8, 8);
SIZE_AND_ALIGNMENT(SaNtfHandleT, 8, 8);
SIZE_AND_ALIGNMENT(SaNtfNotificationHandleT, 8, 8);
SIZE_AND_ALIGNMENT(SaNtfNotificationFilterHandleT, 8, 8);
SIZE_AND_ALIGNMENT(SaNtfReadHandleT, 8, 8);
SIZE_AND_ALIGNMENT(SaNtfIdentifierT, 8, 8);
SIZE_AND_ALIGNMENT(SaNtfElementIdT, 2, 2);

SIZE_AND_ALIGNMENT(SaAisErrorT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfNotificationTypeT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfEventTypeT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfValueTypeT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfProbableCauseT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfSeverityT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfSeverityTrendT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfSearchModeT, 4, 4);
SIZE_AND_ALIGNMENT(SaNtfSearchDirectionT, 4, 4);

// Counted enumerations: the last value fixes all of them.
static_assert(SA_MAX_NAME_LENGTH == 600);
static_assert(SA_AIS_ERR_DEPLOYMENT == 40);
static_assert(SA_NTF_ALARM_ENVIRONMENT == 0x4005);
static_assert(SA_NTF_VALUE_LDAP_NAME == 10);
static_assert(SA_NTF_VALUE_STRING == 11);
static_assert(SA_NTF_VALUE_ARRAY == 14);
static_assert(SA_NTF_ADAPTER_ERROR == 0);
static_assert(SA_NTF_UNSPECIFIED_REASON == 74);
static_assert(SA_NTF_SEVERITY_CRITICAL == 5);
static_assert(SA_NTF_TREND_LESS_SEVERE == 2);
static_assert(SA_NTF_SEARCH_ONLY_FILTER == 7);
static_assert(SA_NTF_SEARCH_YOUNGER == 2);
static_assert(static_cast<SaUint64T>(SA_TIME_UNKNOWN) == 0x8000000000000000ULL);

SIZE_AND_ALIGNMENT(SaNameT, 602, 2);
FIELD(SaNameT, length, 0);
FIELD(SaNameT, value, 2);

SIZE_AND_ALIGNMENT(SaVersionT, 3, 1);
FIELD(SaVersionT, releaseCode, 0);
FIELD(SaVersionT, majorVersion, 1);
FIELD(SaVersionT, minorVersion, 2);

SIZE_AND_ALIGNMENT(SaNtfClassIdT, 8, 4);
FIELD(SaNtfClassIdT, vendorId, 0);
FIELD(SaNtfClassIdT, majorId, 4);
FIELD(SaNtfClassIdT, minorId, 6);

SIZE_AND_ALIGNMENT(SaNtfValueT, 8, 8);
FIELD(SaNtfValueT, ptrVal.dataOffset, 0);
FIELD(SaNtfValueT, ptrVal.dataSize, 2);
FIELD(SaNtfValueT, arrayVal.arrayOffset, 0);
FIELD(SaNtfValueT, arrayVal.numElements, 2);
FIELD(SaNtfValueT, arrayVal.elementSize, 4);
static_assert(sizeof(SaNtfValueT::ptrVal) == 4 && sizeof(SaNtfValueT::arrayVal) == 6);

SIZE_AND_ALIGNMENT(SaNtfAdditionalInfoT, 16, 8);
FIELD(SaNtfAdditionalInfoT, infoId, 0);
FIELD(SaNtfAdditionalInfoT, infoType, 4);
FIELD(SaNtfAdditionalInfoT, infoValue, 8);

SIZE_AND_ALIGNMENT(SaNtfNotificationHeaderT, 80, 8);
FIELD(SaNtfNotificationHeaderT, eventType, 0);
FIELD(SaNtfNotificationHeaderT, notificationObject, 8);
FIELD(SaNtfNotificationHeaderT, notifyingObject, 16);
FIELD(SaNtfNotificationHeaderT, notificationClassId, 24);
FIELD(SaNtfNotificationHeaderT, eventTime, 32);
FIELD(SaNtfNotificationHeaderT, numCorrelatedNotifications, 40);
FIELD(SaNtfNotificationHeaderT, lengthAdditionalText, 42);
FIELD(SaNtfNotificationHeaderT, numAdditionalInfo, 44);
FIELD(SaNtfNotificationHeaderT, notificationId, 48);
FIELD(SaNtfNotificationHeaderT, correlatedNotifications, 56);
FIELD(SaNtfNotificationHeaderT, additionalText, 64);
FIELD(SaNtfNotificationHeaderT, additionalInfo, 72);

SIZE_AND_ALIGNMENT(SaNtfThresholdInformationT, 40, 8);
FIELD(SaNtfThresholdInformationT, thresholdId, 0);
FIELD(SaNtfThresholdInformationT, thresholdValueType, 4);
FIELD(SaNtfThresholdInformationT, thresholdValue, 8);
FIELD(SaNtfThresholdInformationT, thresholdHysteresis, 16);
FIELD(SaNtfThresholdInformationT, observedValue, 24);
FIELD(SaNtfThresholdInformationT, armTime, 32);

SIZE_AND_ALIGNMENT(SaNtfProposedRepairActionT, 16, 8);
FIELD(SaNtfProposedRepairActionT, actionId, 0);
FIELD(SaNtfProposedRepairActionT, actionValueType, 4);
FIELD(SaNtfProposedRepairActionT, actionValue, 8);

SIZE_AND_ALIGNMENT(SaNtfAttributeT, 16, 8);
FIELD(SaNtfAttributeT, attributeId, 0);
FIELD(SaNtfAttributeT, attributeType, 4);
FIELD(SaNtfAttributeT, attributeValue, 8);

SIZE_AND_ALIGNMENT(SaNtfSpecificProblemT, 24, 8);
FIELD(SaNtfSpecificProblemT, problemId, 0);
FIELD(SaNtfSpecificProblemT, problemClassId, 4);
FIELD(SaNtfSpecificProblemT, problemType, 12);
FIELD(SaNtfSpecificProblemT, problemValue, 16);

SIZE_AND_ALIGNMENT(SaNtfAlarmNotificationT, 152, 8);
FIELD(SaNtfAlarmNotificationT, notificationHandle, 0);
FIELD(SaNtfAlarmNotificationT, notificationHeader, 8);
FIELD(SaNtfAlarmNotificationT, numSpecificProblems, 88);
FIELD(SaNtfAlarmNotificationT, numMonitoredAttributes, 90);
FIELD(SaNtfAlarmNotificationT, numProposedRepairActions, 92);
FIELD(SaNtfAlarmNotificationT, probableCause, 96);
FIELD(SaNtfAlarmNotificationT, specificProblems, 104);
FIELD(SaNtfAlarmNotificationT, perceivedSeverity, 112);
FIELD(SaNtfAlarmNotificationT, trend, 120);
FIELD(SaNtfAlarmNotificationT, thresholdInformation, 128);
FIELD(SaNtfAlarmNotificationT, monitoredAttributes, 136);
FIELD(SaNtfAlarmNotificationT, proposedRepairActions, 144);

SIZE_AND_ALIGNMENT(SaNtfCallbacksT, 16, 8);
FIELD(SaNtfCallbacksT, saNtfNotificationCallback, 0);
FIELD(SaNtfCallbacksT, saNtfNotificationDiscardedCallback, 8);

SIZE_AND_ALIGNMENT(SaNtfNotificationsT, 160, 8);
FIELD(SaNtfNotificationsT, notificationType, 0);
FIELD(SaNtfNotificationsT, notification.alarmNotification, 8);

SIZE_AND_ALIGNMENT(SaNtfSearchCriteriaT, 24, 8);
FIELD(SaNtfSearchCriteriaT, searchMode, 0);
FIELD(SaNtfSearchCriteriaT, eventTime, 8);
FIELD(SaNtfSearchCriteriaT, notificationId, 16);

SIZE_AND_ALIGNMENT(SaNtfNotificationFilterHeaderT, 64, 8);
FIELD(SaNtfNotificationFilterHeaderT, numEventTypes, 0);
FIELD(SaNtfNotificationFilterHeaderT, eventTypes, 8);
FIELD(SaNtfNotificationFilterHeaderT, numNotificationObjects, 16);
FIELD(SaNtfNotificationFilterHeaderT, notificationObjects, 24);
FIELD(SaNtfNotificationFilterHeaderT, numNotifyingObjects, 32);
FIELD(SaNtfNotificationFilterHeaderT, notifyingObjects, 40);
FIELD(SaNtfNotificationFilterHeaderT, numNotificationClassIds, 48);
FIELD(SaNtfNotificationFilterHeaderT, notificationClassIds, 56);

SIZE_AND_ALIGNMENT(SaNtfAlarmNotificationFilterT, 104, 8);
FIELD(SaNtfAlarmNotificationFilterT, notificationFilterHandle, 0);
FIELD(SaNtfAlarmNotificationFilterT, notificationFilterHeader, 8);
FIELD(SaNtfAlarmNotificationFilterT, numProbableCauses, 72);
FIELD(SaNtfAlarmNotificationFilterT, numPerceivedSeverities, 74);
FIELD(SaNtfAlarmNotificationFilterT, numTrends, 76);
FIELD(SaNtfAlarmNotificationFilterT, probableCauses, 80);
FIELD(SaNtfAlarmNotificationFilterT, perceivedSeverities, 88);
FIELD(SaNtfAlarmNotificationFilterT, trends, 96);

SIZE_AND_ALIGNMENT(SaNtfNotificationTypeFilterHandlesT, 40, 8);
FIELD(SaNtfNotificationTypeFilterHandlesT, objectCreateDeleteFilterHandle, 0);
FIELD(SaNtfNotificationTypeFilterHandlesT, attributeChangeFilterHandle, 8);
FIELD(SaNtfNotificationTypeFilterHandlesT, stateChangeFilterHandle, 16);
FIELD(SaNtfNotificationTypeFilterHandlesT, alarmFilterHandle, 24);
FIELD(SaNtfNotificationTypeFilterHandlesT, securityAlarmFilterHandle, 32);

} // namespace
