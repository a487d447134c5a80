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
/// for one send.
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

    std::string notificationObject;  ///< exactly as the client gave it
    std::uint32_t perceivedSeverity; ///< an SaNtfSeverityT value
    std::string additionalText;      ///< empty for a cease
    std::vector<std::string> additionalInfo;
    std::uint32_t majorId;    ///< of the notification class id, 0 to 65535
    std::uint32_t minorId;    ///< of the notification class id, 0 to 65535
    std::string programGroup; ///< its name; `kNoProgramGroup` when the alarm has none
};

#pragma GCC diagnostic pop

} // namespace dolq
