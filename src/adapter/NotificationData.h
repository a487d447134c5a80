#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace dolq {

/// The program group name that stands for no program group.
constexpr char kNoProgramGroup[] = "nonePgGrp";

/// One alarm as the adapter hands it to the session: every value translated, everything a copy.
class NotificationData {
public:
    NotificationData(const std::string& notificationObject_, std::uint32_t perceivedSeverity_,
                     const std::string& additionalText_, std::vector<std::string> additionalInfo_,
                     std::uint32_t majorId_, std::uint32_t minorId_,
                     const std::string& programGroup_)
        : notificationObject(notificationObject_), perceivedSeverity(perceivedSeverity_),
          additionalText(additionalText_), additionalInfo(std::move(additionalInfo_)),
          majorId(majorId_), minorId(minorId_), programGroup(programGroup_) {}
    virtual ~NotificationData() = default;

    std::string notificationObject;  ///< exactly as the client gave it
    std::uint32_t perceivedSeverity; ///< an SaNtfSeverityT value
    std::string additionalText;
    std::vector<std::string> additionalInfo;
    std::uint32_t majorId; ///< 0 to 65535
    std::uint32_t minorId; ///< 0 to 65535
    std::string programGroup;
};

} // namespace dolq
