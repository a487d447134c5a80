#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/AlarmNames.h"

namespace dolq {

using common::kNoProgramGroup;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow" // the constructor's parameters are called as the fields

/// One alarm in the notification service's terms, as the adapter hands it to the session: the parts
/// of an alarm notification that differ from one alarm to the next. It owns its texts, and lives
/// for one send. A cease has neither texts nor a program group.
class NotificationData {
public:
    NotificationData(const std::string& notificationObject, std::uint32_t perceivedSeverity,
                     const std::string& additionalText,
                     const std::vector<std::string>& additionalInfo, std::uint32_t majorId,
                     std::uint32_t minorId, const std::string& programGroup)
        : notificationObject(notificationObject), perceivedSeverity(perceivedSeverity),
          additionalText(additionalText), additionalInfo(additionalInfo), majorId(majorId),
          minorId(minorId), programGroup(programGroup) {}
    virtual ~NotificationData() = default;

    /// The managed object in alarm, which is also the one that reports it: exactly as the client
    /// gave it.
    std::string notificationObject;
    /// An SaNtfSeverityT value. "Cleared" makes the notification a cease.
    std::uint32_t perceivedSeverity;
    std::string additionalText;
    /// The correlation info first, then the client's entries.
    std::vector<std::string> additionalInfo;
    /// Two parts of the notification class id, which tells what kind of alarm it is: 0 to 65535.
    std::uint32_t majorId;
    std::uint32_t minorId;
    /// The name of the proposed repair action; `kNoProgramGroup` when the alarm has none.
    std::string programGroup;
};

#pragma GCC diagnostic pop

} // namespace dolq
