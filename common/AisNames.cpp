#include "common/AisNames.h"

#include <cstddef>
#include <iterator>

namespace common {

namespace {

constexpr std::string_view kOk = "SA_AIS_OK";
constexpr std::string_view kErrorPrefix = "SA_AIS_ERR_";

/// The names of the codes from 2 on, without their prefix.
constexpr std::string_view kErrors[] = {
    "LIBRARY",
    "VERSION",
    "INIT",
    "TIMEOUT",
    "TRY_AGAIN",
    "INVALID_PARAM",
    "NO_MEMORY",
    "BAD_HANDLE",
    "BUSY",
    "ACCESS",
    "NOT_EXIST",
    "NAME_TOO_LONG",
    "EXIST",
    "NO_SPACE",
    "INTERRUPT",
    "NAME_NOT_FOUND",
    "NO_RESOURCES",
    "NOT_SUPPORTED",
    "BAD_OPERATION",
    "FAILED_OPERATION",
    "MESSAGE_ERROR",
    "QUEUE_FULL",
    "QUEUE_NOT_AVAILABLE",
    "BAD_FLAGS",
    "TOO_BIG",
    "NO_SECTIONS",
    "NO_OP",
    "REPAIR_PENDING",
    "NO_BINDINGS",
    "UNAVAILABLE",
    "CAMPAIGN_ERROR_DETECTED",
    "CAMPAIGN_PROC_FAILED",
    "CAMPAIGN_CANCELED",
    "CAMPAIGN_FAILED",
    "CAMPAIGN_SUSPENDED",
    "CAMPAIGN_SUSPENDING",
    "ACCESS_DENIED",
    "NOT_READY",
    "DEPLOYMENT",
};
constexpr std::uint32_t kFirstError = 2;

} // namespace

std::string aisText(std::uint32_t code) {
    std::string text = std::to_string(code);
    const std::size_t index = code - kFirstError; // wraps for smaller codes
    if (code == kFirstError - 1) {
        text.append(" (").append(kOk).append(")");
    } else if (index < std::size(kErrors)) {
        text.append(" (").append(kErrorPrefix).append(kErrors[index]).append(")");
    }
    return text;
}

std::string_view aisMeaning(std::uint32_t code) {
    switch (code) {
    case 2:
        return "the service cannot be used";
    case 3:
        return "it does not speak version A.1 of the interface";
    case 5:
        return "no answer came in time";
    case 7:
        return "a field holds what may not be sent";
    case 8:
        return "it is out of memory";
    case 9:
        return "it does not know the session or the notification";
    case 13:
        return "the object's name is too long for it";
    case 15:
        return "the texts together are beyond its limit";
    case 18:
        return "it lacks a resource, such as room on its disk";
    case 26:
        return "more was asked for than it allows";
    case 31:
        return "the node is no member of the cluster, or a stub was loaded";
    default:
        return "";
    }
}

std::optional<std::uint32_t> aisCode(std::string_view name) {
    if (name == "OK" || name == kOk) {
        return kFirstError - 1;
    }
    if (name.substr(0, kErrorPrefix.size()) == kErrorPrefix) {
        name.remove_prefix(kErrorPrefix.size());
    }
    for (std::uint32_t index = 0; index < std::size(kErrors); ++index) {
        if (kErrors[index] == name) {
            return kFirstError + index;
        }
    }
    return std::nullopt;
}

} // namespace common
