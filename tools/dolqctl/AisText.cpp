#include "AisText.h"

#include <cstddef>
#include <iterator>

namespace dolqctl {

namespace {

/// Of the codes from 1 on.
constexpr const char* kNames[] = {"SA_AIS_OK",
                                  "SA_AIS_ERR_LIBRARY",
                                  "SA_AIS_ERR_VERSION",
                                  "SA_AIS_ERR_INIT",
                                  "SA_AIS_ERR_TIMEOUT",
                                  "SA_AIS_ERR_TRY_AGAIN",
                                  "SA_AIS_ERR_INVALID_PARAM",
                                  "SA_AIS_ERR_NO_MEMORY",
                                  "SA_AIS_ERR_BAD_HANDLE",
                                  "SA_AIS_ERR_BUSY",
                                  "SA_AIS_ERR_ACCESS",
                                  "SA_AIS_ERR_NOT_EXIST",
                                  "SA_AIS_ERR_NAME_TOO_LONG",
                                  "SA_AIS_ERR_EXIST",
                                  "SA_AIS_ERR_NO_SPACE",
                                  "SA_AIS_ERR_INTERRUPT",
                                  "SA_AIS_ERR_NAME_NOT_FOUND",
                                  "SA_AIS_ERR_NO_RESOURCES",
                                  "SA_AIS_ERR_NOT_SUPPORTED",
                                  "SA_AIS_ERR_BAD_OPERATION",
                                  "SA_AIS_ERR_FAILED_OPERATION",
                                  "SA_AIS_ERR_MESSAGE_ERROR",
                                  "SA_AIS_ERR_QUEUE_FULL",
                                  "SA_AIS_ERR_QUEUE_NOT_AVAILABLE",
                                  "SA_AIS_ERR_BAD_FLAGS",
                                  "SA_AIS_ERR_TOO_BIG",
                                  "SA_AIS_ERR_NO_SECTIONS",
                                  "SA_AIS_ERR_NO_OP",
                                  "SA_AIS_ERR_REPAIR_PENDING",
                                  "SA_AIS_ERR_NO_BINDINGS",
                                  "SA_AIS_ERR_UNAVAILABLE"};

} // namespace

std::string text(SaAisErrorT answer) {
    const auto index = static_cast<std::size_t>(answer) - 1; // wraps for 0
    const std::string number = std::to_string(answer);
    return index < std::size(kNames) ? number + " (" + kNames[index] + ")" : number;
}

} // namespace dolqctl
