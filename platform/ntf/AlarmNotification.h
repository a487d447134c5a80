#pragma once

#include "ValueBlocks.h"
#include "log/AlarmRecord.h"
#include "saNtf.h"

#include <cstddef>
#include <memory>
#include <mutex>

namespace ruxa::ntf {

/// How many of each a notification is allocated with.
struct AlarmCounts {
    SaUint16T correlatedNotifications;
    SaUint16T lengthAdditionalText; ///< terminating NUL included
    SaUint16T additionalInfo;
    SaUint16T specificProblems;
    SaUint16T monitoredAttributes;
    SaUint16T proposedRepairActions;
};

/// An allocated alarm notification: the memory that its sender fills, the checks and the reading of
/// it. Every field is a heap block of exactly its size, so that a sanitizer finds a sender that
/// writes past one. The counts are those of the allocation, whatever the sender's structure says.
class AlarmNotification {
public:
    AlarmNotification(const AlarmCounts& counts, std::size_t valueLimit);

    /// Fills all of `notification` but its handle.
    void describe(SaNtfAlarmNotificationT& notification) const;

    /// Null beyond the limit of all values together; `value` is untouched then.
    void* allocateValue(SaUint16T size, SaNtfValueT& value);

    /// Null when `value` has no block here.
    void* findValue(const SaNtfValueT& value);

    /// False when a field holds what may not be sent. Otherwise gives the notification a new id and
    /// fills `record` with it; an unknown event time becomes the current time there.
    bool compose(AlarmRecord& record);

private:
    /// Zeroed; null for a count of 0.
    template <typename T> using Field = std::unique_ptr<T[]>;

    bool isValid() const;

    const AlarmCounts m_counts;
    const Field<SaNtfEventTypeT> m_eventType;
    const Field<SaNameT> m_notificationObject;
    const Field<SaNameT> m_notifyingObject;
    const Field<SaNtfClassIdT> m_classId;
    const Field<SaTimeT> m_eventTime;
    const Field<SaNtfIdentifierT> m_notificationId;
    const Field<SaNtfIdentifierT> m_correlatedNotifications;
    const Field<char> m_additionalText;
    const Field<SaNtfAdditionalInfoT> m_additionalInfo;
    const Field<SaNtfProbableCauseT> m_probableCause;
    const Field<SaNtfSpecificProblemT> m_specificProblems;
    const Field<SaNtfSeverityT> m_perceivedSeverity;
    const Field<SaNtfSeverityTrendT> m_trend;
    const Field<SaNtfThresholdInformationT> m_thresholdInformation;
    const Field<SaNtfAttributeT> m_monitoredAttributes;
    const Field<SaNtfProposedRepairActionT> m_proposedRepairActions;

    std::mutex m_mutex; ///< calls on one notification may overlap
    ValueBlocks m_values;
};

} // namespace ruxa::ntf
