#include "platform/ntf/AlarmNotification.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>

#include <unistd.h>

#include "platform/ntf/NotificationId.h"

namespace platform::ntf {

namespace {

/// Null when empty, which vector::data() need not be.
template <typename T> T* pointerTo(std::vector<T>& field) {
    return field.empty() ? nullptr : field.data();
}

template <typename T> SaUint16T countOf(const std::vector<T>& field) {
    return static_cast<SaUint16T>(field.size());
}

std::string toText(const SaNameT& name) {
    const char* text = reinterpret_cast<const char*>(name.value);
    return {text, ::strnlen(text, name.length)};
}

/// What a sender wrote into an enumeration. It may be any number, which the enumeration's own type
/// could not hold.
template <typename Enumeration> std::uint32_t codeOf(const Enumeration& written) {
    std::uint32_t code = 0;
    static_assert(sizeof written == sizeof code);
    std::memcpy(&code, &written, sizeof code);
    return code;
}

/// The text of a value, if it is one and was allocated.
std::optional<std::string> textOf(const SaNtfValueTypeT& type, const SaNtfValueT& value,
                                  const ValueBlocks& blocks) {
    const auto* const text = static_cast<const char*>(blocks.find(value));
    if (codeOf(type) != SA_NTF_VALUE_STRING || text == nullptr) {
        return std::nullopt;
    }
    return std::string(text, ::strnlen(text, value.ptrVal.dataSize));
}

SaTimeT currentTime() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
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

bool AlarmNotification::compose(AlarmRecord& record) {
    if (!isValid()) {
        return false;
    }
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
    if (!m_additionalText.empty()) {
        record.additionalText = m_additionalText.data();
    }
    for (const SaNtfAdditionalInfoT& info : m_additionalInfo) {
        record.additionalInfo.push_back(
            {info.infoId, codeOf(info.infoType), textOf(info.infoType, info.infoValue, m_values)});
    }
    for (const SaNtfProposedRepairActionT& action : m_proposedRepairActions) {
        record.proposedRepairActions.push_back(
            {action.actionId, codeOf(action.actionValueType),
             textOf(action.actionValueType, action.actionValue, m_values)});
    }
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
    const auto haveTypes = [&isType](const auto& field, auto typeMember) {
        return std::all_of(field.begin(), field.end(),
                           [&](const auto& element) { return isType(element.*typeMember); });
    };
    const bool textFillsItsLength =
        m_additionalText.empty() ||
        ::strnlen(m_additionalText.data(), m_additionalText.size()) + 1 == m_additionalText.size();
    return m_notificationObject[0].length < SA_MAX_NAME_LENGTH &&
           m_notifyingObject[0].length < SA_MAX_NAME_LENGTH && textFillsItsLength &&
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
