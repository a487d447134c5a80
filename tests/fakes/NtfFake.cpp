#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>

#include "FakePlatform.h"

namespace {

constexpr std::size_t kGuardSize = 64;
constexpr unsigned char kGuardByte = 0xA5;
constexpr auto kTimeAsAllocated = static_cast<SaTimeT>(0xA5A5A5A5A5A5A5A5);

/// A buffer handed to the library, with a guard zone before and behind it. Its own bytes hold the
/// guard byte too: nothing is zero that the library did not make zero.
class Buffer {
public:
    explicit Buffer(std::size_t size) : m_bytes(size + 2 * kGuardSize, kGuardByte) {}
    ~Buffer() {
        const auto untouched = [](unsigned char byte) { return byte == kGuardByte; };
        if (!std::all_of(m_bytes.begin(), m_bytes.begin() + kGuardSize, untouched) ||
            !std::all_of(m_bytes.end() - kGuardSize, m_bytes.end(), untouched)) {
            ++platform().overruns;
        }
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    template <typename T> T* as() { return reinterpret_cast<T*>(m_bytes.data() + kGuardSize); }

private:
    std::vector<unsigned char> m_bytes;
};

struct Notification {
    SaNtfAlarmNotificationT* alarm = nullptr; // on the library's stack
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::map<unsigned, std::pair<const char*, unsigned>> values; // by offset: text, size

    template <typename T> T* allocate(std::size_t count = 1) {
        buffers.push_back(std::make_unique<Buffer>(count * sizeof(T)));
        return buffers.back()->as<T>();
    }

    std::string valueOf(int type, const SaNtfValueT& value) const {
        const auto found = values.find(value.ptrVal.dataOffset);
        if (type != SA_NTF_VALUE_STRING || found == values.end()) {
            return "not a string value";
        }
        const auto [text, size] = found->second;
        return text[size - 1] == '\0' ? std::string(text, size - 1) : "no NUL at the end";
    }
};

std::mutex g_mutex;
std::map<SaNtfNotificationHandleT, Notification> g_notifications;
SaNtfHandleT g_lastHandle = 0;

/// The name's characters, if everything behind them is NUL.
std::string textOf(const SaNameT& name) {
    const auto rest = name.value + std::min<std::size_t>(name.length, sizeof(name.value));
    return std::all_of(rest, std::end(name.value), [](SaUint8T byte) { return byte == 0; })
               ? std::string(reinterpret_cast<const char*>(name.value), name.length)
               : "bytes behind the name's end";
}

FakePlatform::Alarm snapshot(const Notification& notification) {
    const SaNtfAlarmNotificationT& alarm = *notification.alarm;
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    FakePlatform::Alarm copy;
    copy.object = textOf(*header.notificationObject);
    copy.notifyingObject = textOf(*header.notifyingObject);
    copy.eventTime = *header.eventTime == kTimeAsAllocated                        ? "as-allocated"
                     : *header.eventTime == static_cast<SaTimeT>(SA_TIME_UNKNOWN) ? "unknown"
                                                                                  : "wrong";
    copy.severity = *alarm.perceivedSeverity;
    copy.vendorId = header.notificationClassId->vendorId;
    copy.majorId = header.notificationClassId->majorId;
    copy.minorId = header.notificationClassId->minorId;
    copy.additionalText.assign(header.additionalText, header.lengthAdditionalText - 1U);
    for (unsigned i = 0; i < header.numAdditionalInfo; ++i) {
        const SaNtfAdditionalInfoT& info = header.additionalInfo[i];
        copy.additionalInfo.push_back(notification.valueOf(info.infoType, info.infoValue));
    }
    for (unsigned i = 0; i < alarm.numProposedRepairActions; ++i) {
        const SaNtfProposedRepairActionT& action = alarm.proposedRepairActions[i];
        copy.repairActions.push_back(
            std::to_string(action.actionId) + ' ' +
            notification.valueOf(action.actionValueType, action.actionValue));
    }
    copy.constants = {static_cast<int>(*header.eventType), static_cast<int>(*alarm.probableCause),
                      static_cast<int>(*alarm.trend), alarm.thresholdInformation->thresholdId,
                      header.numCorrelatedNotifications};
    return copy;
}

template <typename... Values> void recordCall(const char* function, const Values&... values) {
    std::ostringstream out;
    out << function;
    ((out << ' ' << values), ...);
    platform().record(out.str());
}

} // namespace

extern "C" {

SaAisErrorT saNtfInitialize(SaNtfHandleT* handle, const SaNtfCallbacksT* callbacks,
                            SaVersionT* version) {
    const PlatformCode here;
    recordCall("initialize", version->releaseCode, int{version->majorVersion},
               int{version->minorVersion}, callbacks == nullptr ? "null" : "callbacks");
    const SaAisErrorT result = platform().resultOf("initialize");
    const std::lock_guard<std::mutex> lock(g_mutex);
    *handle = ++g_lastHandle; // written in case of failure too: the library must not trust it
    if (result == SA_AIS_OK) {
        platform().sessions.insert(*handle);
    }
    return result;
}

SaAisErrorT saNtfFinalize(SaNtfHandleT handle) {
    const PlatformCode here;
    recordCall("finalize");
    const SaAisErrorT result = platform().resultOf("finalize");
    const std::lock_guard<std::mutex> lock(g_mutex);
    if (result != SA_AIS_ERR_TRY_AGAIN) {
        platform().sessions.erase(handle);
    }
    return result;
}

SaAisErrorT
saNtfAlarmNotificationAllocate(SaNtfHandleT, SaNtfAlarmNotificationT* alarm,
                               SaUint16T numCorrelatedNotifications, SaUint16T lengthAdditionalText,
                               SaUint16T numAdditionalInfo, SaUint16T numSpecificProblems,
                               SaUint16T numMonitoredAttributes, SaUint16T numProposedRepairActions,
                               SaInt16T variableDataSize) {
    const PlatformCode here;
    recordCall("allocate", numCorrelatedNotifications, lengthAdditionalText, numAdditionalInfo,
               numSpecificProblems, numMonitoredAttributes, numProposedRepairActions,
               variableDataSize);
    const SaAisErrorT result = platform().resultOf("allocate");
    if (result != SA_AIS_OK) {
        return result;
    }
    const std::lock_guard<std::mutex> lock(g_mutex);
    const SaNtfNotificationHandleT handle = ++g_lastHandle;
    Notification& notification = g_notifications[handle];
    notification.alarm = alarm;
    SaNtfNotificationHeaderT& header = alarm->notificationHeader;
    alarm->notificationHandle = handle;
    header.numCorrelatedNotifications = 0xA5A5;
    header.eventType = notification.allocate<SaNtfEventTypeT>();
    header.notificationObject = notification.allocate<SaNameT>();
    header.notifyingObject = notification.allocate<SaNameT>();
    header.notificationClassId = notification.allocate<SaNtfClassIdT>();
    header.eventTime = notification.allocate<SaTimeT>();
    header.notificationId = notification.allocate<SaNtfIdentifierT>();
    header.additionalText = notification.allocate<char>(lengthAdditionalText);
    header.additionalInfo = notification.allocate<SaNtfAdditionalInfoT>(numAdditionalInfo);
    alarm->numProposedRepairActions = numProposedRepairActions;
    alarm->probableCause = notification.allocate<SaNtfProbableCauseT>();
    alarm->perceivedSeverity = notification.allocate<SaNtfSeverityT>();
    alarm->trend = notification.allocate<SaNtfSeverityTrendT>();
    alarm->thresholdInformation = notification.allocate<SaNtfThresholdInformationT>();
    alarm->proposedRepairActions =
        notification.allocate<SaNtfProposedRepairActionT>(numProposedRepairActions);
    ++platform().openNotifications;
    return result;
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT handle, SaUint16T size, void** data,
                                SaNtfValueT* value) {
    const PlatformCode here;
    recordCall("value", size);
    const SaAisErrorT result = platform().resultOf("value");
    if (result == SA_AIS_OK) {
        const std::lock_guard<std::mutex> lock(g_mutex);
        Notification& notification = g_notifications.at(handle);
        char* const text = notification.allocate<char>(size);
        const auto offset = static_cast<SaUint16T>(notification.values.size());
        notification.values[offset] = {text, size};
        value->ptrVal = {offset, size};
        *data = text;
    }
    return result;
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT handle) {
    const PlatformCode here;
    recordCall("send");
    const SaAisErrorT result = platform().resultOf("send");
    if (result == SA_AIS_OK) {
        const std::lock_guard<std::mutex> lock(g_mutex);
        platform().sent.push_back(snapshot(g_notifications.at(handle)));
    }
    return result;
}

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT handle) {
    const PlatformCode here;
    recordCall("free");
    const SaAisErrorT result = platform().resultOf("free");
    if (result != SA_AIS_ERR_TRY_AGAIN) {
        const std::lock_guard<std::mutex> lock(g_mutex);
        platform().openNotifications -= static_cast<int>(g_notifications.erase(handle));
    }
    return result;
}

} // extern "C"
