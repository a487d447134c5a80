#pragma once

#include <cstdint>
#include <string>

#include "trace/Probe.h"
#include "trace/Trace.h"

namespace dolq {

/// An alarm that will not be sent, as the probe `alarm_drop` tells it. What is not known is 0: the
/// adapter names the client's fault, the session the alarm that it is mapped to.
struct LostAlarm {
    const char* cause;
    std::uint32_t code; ///< the service's answer
    const char* notificationObject;
    std::uint32_t faultId;
    std::uint32_t majorId;
    std::uint32_t minorId;
};

inline LostAlarm lostFault(const char* cause, const std::string& notificationObject,
                           std::uint32_t faultId) {
    return {cause, 0, notificationObject.c_str(), faultId, 0, 0};
}

inline void probeDrop([[maybe_unused]] const LostAlarm& lost) {
    DOLQ_PROBE(alarm_drop, lost.cause, lost.code, lost.notificationObject, lost.faultId,
               lost.majorId, lost.minorId);
}

} // namespace dolq

/// Gives an alarm up: the trace that says so to an operator, and the probe. The arguments behind
/// `lost` are those of DOLQ_TRACE.
#define DOLQ_DROP(lost, ...)                                                                       \
    do {                                                                                           \
        DOLQ_TRACE(__VA_ARGS__);                                                                   \
        ::dolq::probeDrop(lost);                                                                   \
    } while (false)
