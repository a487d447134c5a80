// From one NotificationData to one alarm notification of the SA Forum Notification Service.
//
// The service owns the memory of a notification. So an alarm takes four steps: allocate with the
// sizes of its texts, fill, send, free. The sizes cannot change later, so they are computed before,
// in the one place that knows what a notification can carry (FieldLimits). Freeing comes before the
// trace of a failure, because a trace can throw or end the thread. Additional information and the
// program group are values of variable size: the service gives a block for each, one by one.

#include "ntf/dolqNtfSessionImpl.h"

#include <string_view>
#include <utility>

#include <unistd.h>

#include "common/CancellationHeld.h"
#include "common/Joined.h"
#include "ntf/FieldLimits.h"
#include "ntf/NtfImpl.h"
#include "trace/Drop.h"

#if !defined(RUXA_DOLQ_VENDOR_ID) || !defined(RUXA_DOLQ_EVENT_TIME_UNKNOWN)
#error "RUXA_DOLQ_VENDOR_ID and RUXA_DOLQ_EVENT_TIME_UNKNOWN come from the build"
#endif

namespace dolq {

namespace {

constexpr char kTraceUnit[] = "dolqNtfSessionImpl";

// The part of the notification class id that keeps the alarms of different vendors apart.
constexpr SaUint32T kVendorId = RUXA_DOLQ_VENDOR_ID;
constexpr SaNtfElementIdT kThresholdId = 255; // by which receivers know that there is no threshold
// For services that neither set the event time when they allocate nor when they send.
constexpr bool kSetsEventTime = RUXA_DOLQ_EVENT_TIME_UNKNOWN != 0;
constexpr useconds_t kRetryDelayUs = 100000; // microseconds

/// Repeats `call` while the service is too busy to answer it, without end. A thread is cancelled in
/// the pauses alone: a call that is left halfway would leave a lock of the service's client library
/// taken, or memory without an owner.
template <typename Call> SaAisErrorT retryWhileBusy(Call call) {
    const auto callWhole = [&call] {
        const common::CancellationHeld held;
        return call();
    };
    SaAisErrorT result = callWhole();
    while (result == SA_AIS_ERR_TRY_AGAIN) {
        DOLQ_PROBE(service_retry, kRetryDelayUs);
        usleep(kRetryDelayUs);
        result = callWhole();
    }
    return result;
}

/// For the probe.
LostAlarm lostAlarm(const char* cause, SaAisErrorT code, const NotificationData& data) {
    return {cause,
            static_cast<std::uint32_t>(code),
            data.notificationObject.c_str(),
            0,
            data.majorId,
            data.minorId};
}

bool hasProgramGroup(const NotificationData& data) {
    return data.programGroup != std::string_view(kNoProgramGroup);
}

} // namespace

/// An allocated notification: freed on every way out, exceptions and cancellation included.
class NtfSessionImpl::AllocatedAlarm {
public:
    AllocatedAlarm(NtfSessionImpl& session, SaNtfNotificationHandleT handle)
        : m_session(session), m_handle(handle) {}
    ~AllocatedAlarm() {
        if (m_allocated) {
            // Not even in a pause may the thread end here: it would leave a destructor.
            const common::CancellationHeld held;
            static_cast<void>(free());
        }
    }
    AllocatedAlarm(const AllocatedAlarm&) = delete;
    AllocatedAlarm& operator=(const AllocatedAlarm&) = delete;

    SaAisErrorT free() {
        const SaAisErrorT result = m_session.freeAlarm(m_handle);
        m_allocated = false;
        return result;
    }

private:
    NtfSessionImpl& m_session;
    SaNtfNotificationHandleT m_handle;
    bool m_allocated = true;
};

NtfSessionImpl::NtfSessionImpl(std::shared_ptr<NtfI> ntf) : m_ntf(std::move(ntf)) {
    // The first version of the standard's interface. The service writes its own in its place.
    SaVersionT version{'A', 1, 1};
    const SaAisErrorT result = initializeSession(&m_ntfHandle, &version);
    if (result != SA_AIS_OK) {
        m_ntfHandle = 0;
        DOLQ_TRACE(m_traceObject, kFailure, "Initialize Session: errorCode:%x", result);
    }
}

NtfSessionImpl::~NtfSessionImpl() {
    const common::CancellationHeld held;
    try {
        // Also for a session that was refused: the trace then says that there was none.
        const SaAisErrorT result = finalizeSession(m_ntfHandle);
        if (result != SA_AIS_OK) {
            DOLQ_TRACE(m_traceObject, kFailure, "Finalize Session: errorCode:%x", result);
        }
    } catch (...) { // a destructor lets nothing out; there is nobody left to tell
    }
}

void NtfSessionImpl::sendNotification(const NotificationData& data) {
    // Made whether or not the trace is on.
    const std::string additionalInfo =
        data.additionalInfo.empty() ? "Empty" : common::joined(data.additionalInfo);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "SendNotification: notificationObject:%s, perceivedSeverity:%u, additionalText:%s, additionalInfo:%s, majorId:%u, minorId:%u, programGroup:%s",
        data.notificationObject.c_str(), data.perceivedSeverity, data.additionalText.c_str(),
        additionalInfo.c_str(), data.majorId, data.minorId, data.programGroup.c_str());
    if (m_ntfHandle == 0) {
        DOLQ_DROP(lostAlarm("no session", {}, data), m_traceObject, kFlow,
                  "m_ntfHandle: !m_ntfHandle:%llu", m_ntfHandle);
        return;
    }

    // Handle 0, so that an answer of success without a notification is seen when it is filled.
    SaNtfAlarmNotificationT notification{};
    SaAisErrorT result =
        allocateAlarm(m_ntfHandle, &notification, sentSize(data.additionalText),
                      sentCount(data.additionalInfo), hasProgramGroup(data) ? 1 : 0);
    if (result != SA_AIS_OK) {
        // Two blanks before the code, in the texts below, too: operators filter traces by them.
        DOLQ_DROP(lostAlarm("allocate refused", result, data), m_traceObject, kFailure,
                  "Allocate Alarm:  errorCode:%x", result);
        return;
    }
    AllocatedAlarm alarm(*this, notification.notificationHandle);
    result = populateAlarm(notification, data);
    if (result != SA_AIS_OK) {
        static_cast<void>(alarm.free());
        DOLQ_DROP(lostAlarm("value refused", result, data), m_traceObject, kFailure,
                  "Populate Alarm:  errorCode:%x", result);
        return;
    }
    result = sendAlarm(notification.notificationHandle);
    if (result != SA_AIS_OK) {
        static_cast<void>(alarm.free());
        DOLQ_DROP(lostAlarm("send refused", result, data), m_traceObject, kFailure,
                  "Send Alarm:  errorCode:%x", result);
        return;
    }
    // The alarm is with the service, so it is not lost by what follows.
    result = alarm.free();
    if (result != SA_AIS_OK) {
        DOLQ_TRACE(m_traceObject, kFailure, "Free Alarm:  errorCode:%x", result);
    }
}

SaAisErrorT NtfSessionImpl::populateAlarm(SaNtfAlarmNotificationT& notification,
                                          const NotificationData& data) {
    const SaNtfNotificationHandleT handle = notification.notificationHandle;
    if (handle == 0) {
        return SA_AIS_ERR_BAD_HANDLE;
    }
    // The alarm information of ITU-T X.733: perceived severity, probable cause, trend indication,
    // proposed repair actions and threshold information.
    *notification.perceivedSeverity = static_cast<SaNtfSeverityT>(data.perceivedSeverity);
    // Cause, trend and threshold are the same for all alarms: the class id below says more.
    *notification.probableCause = SA_NTF_UNSPECIFIED_REASON;
    *notification.trend = SA_NTF_TREND_NO_CHANGE;

    SaAisErrorT result = SA_AIS_OK;
    if (hasProgramGroup(data)) {
        SaNtfProposedRepairActionT& action = notification.proposedRepairActions[0];
        action.actionId = 0;
        action.actionValueType = SA_NTF_VALUE_STRING;
        // A failure counts only when no entry of additional information follows, for the result is
        // that of the last value: an alarm without its program group is worth more than none.
        result =
            fillValue(handle, data.programGroup, sentSize(data.programGroup), action.actionValue);
    }
    notification.thresholdInformation->thresholdId = kThresholdId;

    // The header is that of any notification: what happened, to which object, and texts.
    SaNtfNotificationHeaderT& header = notification.notificationHeader;
    // The first type of the alarms' range: which one of X.733 it is (communications, quality of
    // service, processing error, equipment, environmental) is not known here.
    *header.eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
    if constexpr (kSetsEventTime) {
        *header.eventTime = static_cast<SaTimeT>(SA_TIME_UNKNOWN);
    }
    // One name for both: receivers that list alarms by the notifying object find the faulty one.
    copyName(data.notificationObject, *header.notificationObject);
    traceCut("notificationObject", data.notificationObject.size(),
             header.notificationObject->length);
    *header.notifyingObject = *header.notificationObject;
    header.notificationClassId->vendorId = kVendorId;
    header.notificationClassId->majorId = static_cast<SaUint16T>(data.majorId);
    header.notificationClassId->minorId = static_cast<SaUint16T>(data.minorId);
    header.numCorrelatedNotifications = 0;
    header.lengthAdditionalText = sentSize(data.additionalText);
    header.numAdditionalInfo = sentCount(data.additionalInfo);
    traceCut("additionalText", data.additionalText.size(), header.lengthAdditionalText - 1U);
    traceCut("additionalInfo", data.additionalInfo.size(), header.numAdditionalInfo);
    copyText(data.additionalText, header.lengthAdditionalText, header.additionalText);
    // The ids of the entries stay as the service allocated them: the place of an entry tells what
    // it is.
    for (SaUint16T i = 0; i < header.numAdditionalInfo; ++i) {
        SaNtfAdditionalInfoT& info = header.additionalInfo[i];
        info.infoType = SA_NTF_VALUE_STRING;
        const std::string& text = data.additionalInfo[i];
        const std::uint16_t size = sentSize(text);
        if (size - 1U != text.size()) {
            DOLQ_TRACE(m_traceObject, kFailure,
                       "Alarm field cut: field:additionalInfo, entry:%u, length:%u, sent:%u",
                       std::uint32_t{i}, static_cast<std::uint32_t>(text.size()), size - 1U);
        }
        result = fillValue(handle, text, size, info.infoValue);
        if (result != SA_AIS_OK) {
            return result;
        }
    }
    return result;
}

SaAisErrorT NtfSessionImpl::fillValue(SaNtfNotificationHandleT handle, const std::string& text,
                                      std::uint16_t size, SaNtfValueT& value) {
    void* block = nullptr; // the service owns it, with the notification
    const SaAisErrorT result =
        retryWhileBusy([&] { return m_ntf->ptrValAllocate(handle, size, &block, &value); });
    if (result == SA_AIS_OK) {
        copyText(text, size, static_cast<char*>(block));
    }
    return result;
}

SaAisErrorT NtfSessionImpl::initializeSession(SaNtfHandleT* handle, SaVersionT* version) {
    return retryWhileBusy([&] { return m_ntf->initialize(handle, nullptr, version); });
}

SaAisErrorT NtfSessionImpl::finalizeSession(SaNtfHandleT handle) {
    if (handle == 0) {
        return SA_AIS_ERR_BAD_HANDLE;
    }
    return retryWhileBusy([&] { return m_ntf->finalize(handle); });
}

SaAisErrorT NtfSessionImpl::allocateAlarm(SaNtfHandleT handle,
                                          SaNtfAlarmNotificationT* notification,
                                          std::uint16_t lengthAdditionalText,
                                          std::uint16_t numAdditionalInfo,
                                          std::uint16_t numProposedRepairActions) {
    if (handle == 0) {
        return SA_AIS_ERR_BAD_HANDLE;
    }
    return retryWhileBusy([&] {
        return m_ntf->alarmNotificationAllocate(handle, notification, 0, lengthAdditionalText,
                                                numAdditionalInfo, 0, 0, numProposedRepairActions,
                                                SA_NTF_ALLOC_SYSTEM_LIMIT);
    });
}

SaAisErrorT NtfSessionImpl::sendAlarm(SaNtfNotificationHandleT handle) {
    if (handle == 0) {
        return SA_AIS_ERR_BAD_HANDLE;
    }
    return retryWhileBusy([&] { return m_ntf->notificationSend(handle); });
}

SaAisErrorT NtfSessionImpl::freeAlarm(SaNtfNotificationHandleT handle) {
    if (handle == 0) {
        return SA_AIS_ERR_BAD_HANDLE;
    }
    return retryWhileBusy([&] { return m_ntf->notificationFree(handle); });
}

void NtfSessionImpl::traceCut(const char* field, std::size_t length, std::size_t sent) const {
    if (sent != length) {
        DOLQ_TRACE(m_traceObject, kFailure, "Alarm field cut: field:%s, length:%u, sent:%u", field,
                   static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(sent));
    }
}

std::shared_ptr<NtfSessionI> openSession() {
    return std::make_shared<NtfSessionImpl>(std::make_shared<NtfImpl>());
}

} // namespace dolq
