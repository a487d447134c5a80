#pragma once

#include <cstddef>
#include <vector>

#include <saNtf.h>

#include "platform/ntf/HandleTable.h"
#include "platform/ntf/ValueBlocks.h"
#include "platform/ntf/log/AlarmRecord.h"

namespace platform::ntf {

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
/// The calls on one notification must not overlap.
class AlarmNotification final : public SessionObject {
public:
    AlarmNotification(const AlarmCounts& counts, std::size_t valueLimit);

    /// One that was sent: it has no room for further values. Cuts what it cannot hold.
    explicit AlarmNotification(const AlarmRecord& record);

    /// Fills all of `notification` but its handle; null pointers for what there is none of.
    void describe(SaNtfAlarmNotificationT& notification);

    /// Null beyond the limit of all values together; `value` is untouched then.
    void* allocateValue(SaUint16T size, SaNtfValueT& value);

    /// The block of a value; null when `value` is none of the notification's own, or has no block.
    void* findValue(const SaNtfValueT* value) const;

    /// False when a field holds what may not be sent.
    bool isValid() const;

    /// False when it is not valid. Otherwise gives the notification a new id and
    /// fills `record` with it; an unknown event time becomes the current time there.
    bool compose(AlarmRecord& record);

private:
    /// Zeroed, and never resized: its size is the count of the allocation.
    template <typename T> using Field = std::vector<T>;

    template <typename T>
    void setElements(Field<T>& field, const std::vector<Element>& elements, SaNtfElementIdT T::*id,
                     SaNtfValueTypeT T::*type, SaNtfValueT T::*value);

    Field<SaNtfEventTypeT> m_eventType;
    Field<SaNameT> m_notificationObject;
    Field<SaNameT> m_notifyingObject;
    Field<SaNtfClassIdT> m_classId;
    Field<SaTimeT> m_eventTime;
    Field<SaNtfIdentifierT> m_notificationId;
    Field<SaNtfIdentifierT> m_correlatedNotifications;
    Field<char> m_additionalText;
    Field<SaNtfAdditionalInfoT> m_additionalInfo;
    Field<SaNtfProbableCauseT> m_probableCause;
    Field<SaNtfSpecificProblemT> m_specificProblems;
    Field<SaNtfSeverityT> m_perceivedSeverity;
    Field<SaNtfSeverityTrendT> m_trend;
    Field<SaNtfThresholdInformationT> m_thresholdInformation;
    Field<SaNtfAttributeT> m_monitoredAttributes;
    Field<SaNtfProposedRepairActionT> m_proposedRepairActions;

    ValueBlocks m_values;
};

} // namespace platform::ntf
