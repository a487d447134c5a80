// The layouts that every client of the standard's A.01 interface on x86-64 is compiled for: a
// change here is a client reading the wrong bytes.

#include <cstddef>

#include <saNtf.h>

namespace {

template <typename... Conditions> constexpr bool all(Conditions... conditions) {
    return (conditions && ...);
}

template <std::size_t Size, typename... Types> constexpr bool haveSize() {
    // NOLINTNEXTLINE(misc-redundant-expression): names of one type are listed side by side
    return ((sizeof(Types) == Size && alignof(Types) == Size) && ...);
}

/// With AT(field, offset) for each field of a structure.
#define LAYOUT(type, size, alignment, ...)                                                         \
    struct type##Layout {                                                                          \
        using Type = type;                                                                         \
        static_assert(sizeof(Type) == (size) && alignof(Type) == (alignment), "size of " #type);   \
        static_assert(all(__VA_ARGS__), "fields of " #type);                                       \
    }
#define AT(field, offset) offsetof(Type, field) == (offset)

static_assert(haveSize<2, SaInt16T, SaUint16T, SaNtfElementIdT>());
static_assert(haveSize<4, SaAisErrorT, SaNtfNotificationTypeT, SaNtfEventTypeT, SaNtfValueTypeT,
                       SaNtfProbableCauseT, SaNtfSeverityT, SaNtfSeverityTrendT, SaNtfSearchModeT,
                       SaNtfSearchDirectionT>());
static_assert(haveSize<8, SaStringT, SaTimeT, SaNtfHandleT, SaNtfNotificationHandleT,
                       SaNtfNotificationFilterHandleT, SaNtfReadHandleT, SaNtfIdentifierT>());

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
static_assert(sizeof(SaNtfValueT::ptrVal) == 4 && sizeof(SaNtfValueT::arrayVal) == 6);

LAYOUT(SaNameT, 602, 2, AT(length, 0), AT(value, 2));
LAYOUT(SaVersionT, 3, 1, AT(releaseCode, 0), AT(majorVersion, 1), AT(minorVersion, 2));
LAYOUT(SaNtfClassIdT, 8, 4, AT(vendorId, 0), AT(majorId, 4), AT(minorId, 6));
LAYOUT(SaNtfValueT, 8, 8, AT(ptrVal.dataOffset, 0), AT(ptrVal.dataSize, 2),
       AT(arrayVal.arrayOffset, 0), AT(arrayVal.numElements, 2), AT(arrayVal.elementSize, 4));
LAYOUT(SaNtfAdditionalInfoT, 16, 8, AT(infoId, 0), AT(infoType, 4), AT(infoValue, 8));
LAYOUT(SaNtfNotificationHeaderT, 80, 8, AT(eventType, 0), AT(notificationObject, 8),
       AT(notifyingObject, 16), AT(notificationClassId, 24), AT(eventTime, 32),
       AT(numCorrelatedNotifications, 40), AT(lengthAdditionalText, 42), AT(numAdditionalInfo, 44),
       AT(notificationId, 48), AT(correlatedNotifications, 56), AT(additionalText, 64),
       AT(additionalInfo, 72));
LAYOUT(SaNtfThresholdInformationT, 40, 8, AT(thresholdId, 0), AT(thresholdValueType, 4),
       AT(thresholdValue, 8), AT(thresholdHysteresis, 16), AT(observedValue, 24), AT(armTime, 32));
LAYOUT(SaNtfProposedRepairActionT, 16, 8, AT(actionId, 0), AT(actionValueType, 4),
       AT(actionValue, 8));
LAYOUT(SaNtfAttributeT, 16, 8, AT(attributeId, 0), AT(attributeType, 4), AT(attributeValue, 8));
LAYOUT(SaNtfSpecificProblemT, 24, 8, AT(problemId, 0), AT(problemClassId, 4), AT(problemType, 12),
       AT(problemValue, 16));
LAYOUT(SaNtfAlarmNotificationT, 152, 8, AT(notificationHandle, 0), AT(notificationHeader, 8),
       AT(numSpecificProblems, 88), AT(numMonitoredAttributes, 90),
       AT(numProposedRepairActions, 92), AT(probableCause, 96), AT(specificProblems, 104),
       AT(perceivedSeverity, 112), AT(trend, 120), AT(thresholdInformation, 128),
       AT(monitoredAttributes, 136), AT(proposedRepairActions, 144));
LAYOUT(SaNtfCallbacksT, 16, 8, AT(saNtfNotificationCallback, 0),
       AT(saNtfNotificationDiscardedCallback, 8));
LAYOUT(SaNtfNotificationsT, 160, 8, AT(notificationType, 0), AT(notification.alarmNotification, 8));
LAYOUT(SaNtfSearchCriteriaT, 24, 8, AT(searchMode, 0), AT(eventTime, 8), AT(notificationId, 16));
LAYOUT(SaNtfNotificationFilterHeaderT, 64, 8, AT(numEventTypes, 0), AT(eventTypes, 8),
       AT(numNotificationObjects, 16), AT(notificationObjects, 24), AT(numNotifyingObjects, 32),
       AT(notifyingObjects, 40), AT(numNotificationClassIds, 48), AT(notificationClassIds, 56));
LAYOUT(SaNtfAlarmNotificationFilterT, 104, 8, AT(notificationFilterHandle, 0),
       AT(notificationFilterHeader, 8), AT(numProbableCauses, 72), AT(numPerceivedSeverities, 74),
       AT(numTrends, 76), AT(probableCauses, 80), AT(perceivedSeverities, 88), AT(trends, 96));
LAYOUT(SaNtfNotificationTypeFilterHandlesT, 40, 8, AT(objectCreateDeleteFilterHandle, 0),
       AT(attributeChangeFilterHandle, 8), AT(stateChangeFilterHandle, 16),
       AT(alarmFilterHandle, 24), AT(securityAlarmFilterHandle, 32));

} // namespace
