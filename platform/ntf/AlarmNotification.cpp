#include "platform/ntf/AlarmNotification.h"

#include <algorithm>
#include <cstring>

#include "platform/ntf/Fields.h"

namespace platform::ntf {

namespace {

/// Null when empty, which vector::data() need not be.
template <typename T> T* pointerTo(std::vector<T>& field) {
    return field.empty() ? nullptr : field.data();
}

template <typename T> SaUint16T countOf(const std::vector<T>& field) {
    return static_cast<SaUint16T>(field.size());
}

} // namespace

AlarmNotification::AlarmNotification(const AlarmCounts& counts, std::size_t valueLimit)
    : m_eventType(1), m_notificationObject(1), m_notifyingObject(1), m_classId(1), m_eventTime(1),
      m_notificationId(1), m_correlatedNotifications(counts.correlatedNotifications),
      m_additionalText(counts.lengthAdditionalText), m_additionalInfo(counts.additionalInfo),
      m_probableCause(1), m_specificProblems(counts.specificProblems), m_perceivedSeverity(1),
      m_trend(1), m_thresholdInformation(1), m_monitoredAttributes(counts.monitoredAttributes),
      m_proposedRepairActions(counts.proposedRepairActions), m_values(valueLimit) {
    m_eventTime[0] = SA_TIME_UNKNOWN;
    m_trend[0] = SA_NTF_TREND_NO_CHANGE;
}

void AlarmNotification::describe(SaNtfAlarmNotificationT& notification) {
    SaNtfNotificationHeaderT& header = notification.notificationHeader;
    header.eventType = pointerTo(m_eventType);
    header.notificationObject = pointerTo(m_notificationObject);
    header.notifyingObject = pointerTo(m_notifyingObject);
    header.notificationClassId = pointerTo(m_classId);
    header.eventTime = pointerTo(m_eventTime);
    header.numCorrelatedNotifications = countOf(m_correlatedNotifications);
    header.lengthAdditionalText = countOf(m_additionalText);
    header.numAdditionalInfo = countOf(m_additionalInfo);
    header.notificationId = pointerTo(m_notificationId);
    header.correlatedNotifications = pointerTo(m_correlatedNotifications);
    header.additionalText = pointerTo(m_additionalText);
    header.additionalInfo = pointerTo(m_additionalInfo);
    notification.numSpecificProblems = countOf(m_specificProblems);
    notification.numMonitoredAttributes = countOf(m_monitoredAttributes);
    notification.numProposedRepairActions = countOf(m_proposedRepairActions);
    notification.probableCause = pointerTo(m_probableCause);
    notification.specificProblems = pointerTo(m_specificProblems);
    notification.perceivedSeverity = pointerTo(m_perceivedSeverity);
    notification.trend = pointerTo(m_trend);
    notification.thresholdInformation = pointerTo(m_thresholdInformation);
    notification.monitoredAttributes = pointerTo(m_monitoredAttributes);
    notification.proposedRepairActions = pointerTo(m_proposedRepairActions);
}

void* AlarmNotification::allocateValue(SaUint16T size, SaNtfValueT& value) {
    return m_values.allocate(size, value);
}

void* AlarmNotification::findValue(const SaNtfValueT* value) const {
    const auto isIn = [value](const auto& field, auto valueMember) {
        return std::any_of(field.begin(), field.end(),
                           [&](const auto& element) { return &(element.*valueMember) == value; });
    };
    const bool isOwn =
        isIn(m_additionalInfo, &SaNtfAdditionalInfoT::infoValue) ||
        isIn(m_proposedRepairActions, &SaNtfProposedRepairActionT::actionValue) ||
        isIn(m_specificProblems, &SaNtfSpecificProblemT::problemValue) ||
        isIn(m_monitoredAttributes, &SaNtfAttributeT::attributeValue) ||
        isIn(m_thresholdInformation, &SaNtfThresholdInformationT::thresholdValue) ||
        isIn(m_thresholdInformation, &SaNtfThresholdInformationT::thresholdHysteresis) ||
        isIn(m_thresholdInformation, &SaNtfThresholdInformationT::observedValue);
    return isOwn ? m_values.find(*value) : nullptr;
}

bool AlarmNotification::isValid() const {
    const auto within = [](std::uint32_t code, std::uint32_t first, std::uint32_t last) {
        return first <= code && code <= last;
    };
    const auto isType = [&within](const SaNtfValueTypeT& type) {
        return within(codeOf(type), SA_NTF_VALUE_UINT8, SA_NTF_VALUE_ARRAY);
    };
    const auto haveTypes = [&isType](const auto& field, auto typeMember) {
        return std::all_of(field.begin(), field.end(),
                           [&](const auto& element) { return isType(element.*typeMember); });
    };
    const bool textFillsItsLength =
        m_additionalText.empty() ||
        ::strnlen(m_additionalText.data(), m_additionalText.size()) + 1 == m_additionalText.size();
    return ntf::isValid(m_notificationObject[0]) && ntf::isValid(m_notifyingObject[0]) &&
           textFillsItsLength &&
           within(codeOf(m_eventType[0]), SA_NTF_ALARM_NOTIFICATIONS_START,
                  SA_NTF_ALARM_ENVIRONMENT) &&
           within(codeOf(m_probableCause[0]), SA_NTF_ADAPTER_ERROR, SA_NTF_UNSPECIFIED_REASON) &&
           within(codeOf(m_perceivedSeverity[0]), SA_NTF_SEVERITY_CLEARED,
                  SA_NTF_SEVERITY_CRITICAL) &&
           within(codeOf(m_trend[0]), SA_NTF_TREND_MORE_SEVERE, SA_NTF_TREND_LESS_SEVERE) &&
           isType(m_thresholdInformation[0].thresholdValueType) &&
           haveTypes(m_additionalInfo, &SaNtfAdditionalInfoT::infoType) &&
           haveTypes(m_specificProblems, &SaNtfSpecificProblemT::problemType) &&
           haveTypes(m_monitoredAttributes, &SaNtfAttributeT::attributeType) &&
           haveTypes(m_proposedRepairActions, &SaNtfProposedRepairActionT::actionValueType);
}

} // namespace platform::ntf
