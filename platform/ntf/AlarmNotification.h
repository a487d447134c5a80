#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <saNtf.h>

#include "platform/ntf/HandleTable.h"
#include "platform/ntf/ValueBlocks.h"

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

    /// What was sent with `line` of the notification log: it has no room for further values, and is
    /// cut where it does not fit. Null when the line, with or without its newline, is no whole
    /// notification: blank, half a line that a killed process left, or another program's.
    static std::shared_ptr<AlarmNotification> ofLine(std::string_view line);

    /// Fills all of `notification` but its handle; null pointers for what there is none of.
    void describe(SaNtfAlarmNotificationT& notification);

    /// Null beyond the limit of all values together; `value` is untouched then.
    void* allocateValue(SaUint16T size, SaNtfValueT& value);

    /// The block of a value; null when `value` is none of the notification's own, or has no block.
    void* findValue(const SaNtfValueT* value) const;

    /// False when a field holds what may not be sent.
    bool isValid() const;

    void setId(SaNtfIdentifierT id) { m_notificationId[0] = id; }
    const SaNameT& object() const { return m_notificationObject[0]; }

    /// The line of a valid notification, newline included; an unknown event time becomes the
    /// current time there.
    std::string toLine() const;

private:
    /// Zeroed, and never resized: its size is the count of the allocation.
    template <typename T> using Field = std::vector<T>;

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
