#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "common/AlarmNames.h"

namespace dolq {

using common::kNoProgramGroup;

/// What the adapter asks the session to send: one alarm in the service's terms. It owns its texts.
class NotificationData {
public:
    NotificationData(const std::string& notificationObject, std::uint32_t perceivedSeverity,
                     const std::string& additionalText, std::vector<std::string> additionalInfo,
                     std::uint32_t majorId, std::uint32_t minorId, const std::string& programGroup);
    virtual ~NotificationData() = default;

    std::string notificationObject;  ///< exactly as the client gave it
    std::uint32_t perceivedSeverity; ///< an SaNtfSeverityT value
    std::string additionalText;
    std::vector<std::string> additionalInfo;
    std::uint32_t majorId; ///< 0 to 65535
    std::uint32_t minorId; ///< 0 to 65535
    std::string programGroup;
    std::uint32_t faultId = 0; ///< not sent: told of an alarm that is lost; 0 when it is not known
};

// Out of the class and with other names, or each would hide the field that it fills.
inline NotificationData::NotificationData(const std::string& object, std::uint32_t severity,
                                          const std::string& text, std::vector<std::string> info,
                                          std::uint32_t major, std::uint32_t minor,
                                          const std::string& group)
    : notificationObject(object), perceivedSeverity(severity), additionalText(text),
      additionalInfo(std::move(info)), majorId(major), minorId(minor), programGroup(group) {}

} // namespace dolq
