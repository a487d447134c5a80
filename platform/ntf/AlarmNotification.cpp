#include "AlarmNotification.h"

#include "ElementReader.h"
#include "NotificationId.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>

#include <unistd.h>

namespace ruxa::ntf {
namespace {

template <typename T> std::unique_ptr<T[]> makeField(std::size_t count = 1) {
    return count == 0 ? nullptr : std::make_unique<T[]>(count);
}

std::string toText(const SaNameT& name) {
    const char* text = reinterpret_cast<const char*>(name.value);
    return {text, ::strnlen(text, name.length)};
}

SaTimeT currentTime() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
}

} // namespace

AlarmNotification::AlarmNotification(const AlarmCounts& counts, std::size_t valueLimit)
    : m_counts(counts), m_eventType(makeField<SaNtfEventTypeT>()),
      m_notificationObject(makeField<SaNameT>()), m_notifyingObject(makeField<SaNameT>()),
      m_classId(makeField<SaNtfClassIdT>()), m_eventTime(makeField<SaTimeT>()),
      m_notificationId(makeField<SaNtfIdentifierT>()),
      m_correlatedNotifications(makeField<SaNtfIdentifierT>(counts.correlatedNotifications)),
      m_additionalText(makeField<char>(counts.lengthAdditionalText)),
      m_additionalInfo(makeField<SaNtfAdditionalInfoT>(counts.additionalInfo)),
      m_probableCause(makeField<SaNtfProbableCauseT>()),
      m_specificProblems(makeField<SaNtfSpecificProblemT>(counts.specificProblems)),
      m_perceivedSeverity(makeField<SaNtfSeverityT>()), m_trend(makeField<SaNtfSeverityTrendT>()),
      m_thresholdInformation(makeField<SaNtfThresholdInformationT>()),
      m_monitoredAttributes(makeField<SaNtfAttributeT>(counts.monitoredAttributes)),
      m_proposedRepairActions(makeField<SaNtfProposedRepairActionT>(counts.proposedRepairActions)),
      m_values(valueLimit) {
    m_eventTime[0] = SA_TIME_UNKNOWN;
    m_trend[0] = SA_NTF_TREND_NO_CHANGE;
}

void AlarmNotification::describe(SaNtfAlarmNotificationT& notification) const {
    SaNtfNotificationHeaderT& header = notification.notificationHeader;
    header.eventType = m_eventType.get();
    header.notificationObject = m_notificationObject.get();
    header.notifyingObject = m_notifyingObject.get();
    header.notificationClassId = m_classId.get();
    header.eventTime = m_eventTime.get();
    header.numCorrelatedNotifications = m_counts.correlatedNotifications;
    header.lengthAdditionalText = m_counts.lengthAdditionalText;
    header.numAdditionalInfo = m_counts.additionalInfo;
    header.notificationId = m_notificationId.get();
    header.correlatedNotifications = m_correlatedNotifications.get();
    header.additionalText = m_additionalText.get();
    header.additionalInfo = m_additionalInfo.get();
    notification.numSpecificProblems = m_counts.specificProblems;
    notification.numMonitoredAttributes = m_counts.monitoredAttributes;
    notification.numProposedRepairActions = m_counts.proposedRepairActions;
    notification.probableCause = m_probableCause.get();
    notification.specificProblems = m_specificProblems.get();
    notification.perceivedSeverity = m_perceivedSeverity.get();
    notification.trend = m_trend.get();
    notification.thresholdInformation = m_thresholdInformation.get();
    notification.monitoredAttributes = m_monitoredAttributes.get();
    notification.proposedRepairActions = m_proposedRepairActions.get();
}

void* AlarmNotification::allocateValue(SaUint16T size, SaNtfValueT& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_values.allocate(size, value);
}

void* AlarmNotification::findValue(const SaNtfValueT& value) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_values.find(value);
}

bool AlarmNotification::compose(AlarmRecord& record) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isValid())
        return false;
    m_notificationId[0] = nextNotificationId();
    record.notificationId = m_notificationId[0];
    record.eventTimeNs = m_eventTime[0] == SA_TIME_UNKNOWN ? currentTime() : m_eventTime[0];
    record.eventType = codeOf(m_eventType[0]);
    record.notificationObject = toText(m_notificationObject[0]);
    record.notifyingObject =
        m_notifyingObject[0].length == 0 ? record.notificationObject : toText(m_notifyingObject[0]);
    record.vendorId = m_classId[0].vendorId;
    record.majorId = m_classId[0].majorId;
    record.minorId = m_classId[0].minorId;
    record.perceivedSeverity = codeOf(m_perceivedSeverity[0]);
    record.probableCause = codeOf(m_probableCause[0]);
    record.trend = codeOf(m_trend[0]);
    record.thresholdId = m_thresholdInformation[0].thresholdId;
    if (m_additionalText)
        record.additionalText = m_additionalText.get();
    for (std::size_t i = 0; i < m_counts.additionalInfo; ++i)
        record.additionalInfo.push_back(toElement(m_additionalInfo[i], m_values));
    for (std::size_t i = 0; i < m_counts.proposedRepairActions; ++i)
        record.proposedRepairActions.push_back(toElement(m_proposedRepairActions[i], m_values));
    record.processId = ::getpid();
    record.threadId = ::gettid();
    return true;
}

bool AlarmNotification::isValid() const {
    const auto within = [](std::uint32_t code, std::uint32_t first, std::uint32_t last) {
        return first <= code && code <= last;
    };
    const auto isType = [&within](const SaNtfValueTypeT& type) {
        return within(codeOf(type), SA_NTF_VALUE_UINT8, SA_NTF_VALUE_ARRAY);
    };
    const auto haveTypes = [&isType](const auto& field, std::size_t count, auto typeMember) {
        return std::all_of(field.get(), field.get() + count,
                           [&](const auto& element) { return isType(element.*typeMember); });
    };
    const std::size_t textLength = m_counts.lengthAdditionalText;
    return m_notificationObject[0].length < SA_MAX_NAME_LENGTH &&
           m_notifyingObject[0].length < SA_MAX_NAME_LENGTH &&
           (textLength == 0 || ::strnlen(m_additionalText.get(), textLength) + 1 == textLength) &&
           within(codeOf(m_eventType[0]), SA_NTF_ALARM_NOTIFICATIONS_START,
                  SA_NTF_ALARM_ENVIRONMENT) &&
           within(codeOf(m_probableCause[0]), SA_NTF_ADAPTER_ERROR, SA_NTF_UNSPECIFIED_REASON) &&
           within(codeOf(m_perceivedSeverity[0]), SA_NTF_SEVERITY_CLEARED,
                  SA_NTF_SEVERITY_CRITICAL) &&
           within(codeOf(m_trend[0]), SA_NTF_TREND_MORE_SEVERE, SA_NTF_TREND_LESS_SEVERE) &&
           isType(m_thresholdInformation[0].thresholdValueType) &&
           haveTypes(m_additionalInfo, m_counts.additionalInfo, &SaNtfAdditionalInfoT::infoType) &&
           haveTypes(m_specificProblems, m_counts.specificProblems,
                     &SaNtfSpecificProblemT::problemType) &&
           haveTypes(m_monitoredAttributes, m_counts.monitoredAttributes,
                     &SaNtfAttributeT::attributeType) &&
           haveTypes(m_proposedRepairActions, m_counts.proposedRepairActions,
                     &SaNtfProposedRepairActionT::actionValueType);
}

} // namespace ruxa::ntf
