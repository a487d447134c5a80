#include "alarms/AlarmReader.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "Ntf.h"
#include "Output.h"
#include "common/AlarmNames.h"
#include "common/Escape.h"

namespace dolqctl {

namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

constexpr int kSessions = 4;
constexpr std::size_t kLongestFilter = 255;
constexpr std::chrono::seconds kTimeout{5};
constexpr char kReadNext[] = "saNtfNotificationReadNext";

std::string textOf(const SaNameT& name) {
    return {reinterpret_cast<const char*>(name.value),
            std::min<std::size_t>(name.length, sizeof(name.value))};
}

/// Without the NUL that lengths count.
std::string textOf(const void* text, std::size_t size) {
    const auto* const first = static_cast<const char*>(text);
    return first == nullptr ? "" : std::string(first, ::strnlen(first, size));
}

/// Built member by member, which is faster.
Json contentOf(const SaNtfAlarmNotificationT& alarm, decltype(saNtfPtrValGet)* getPtrVal) {
    constexpr const char* kTypes[] = {"uint8",    "int8",   "uint16",    "int16",  "uint32",
                                      "int32",    "float",  "uint64",    "int64",  "double",
                                      "ldapName", "string", "ipAddress", "binary", "array"};
    constexpr const char* kTrends[] = {"moreSevere", "noChange", "lessSevere"};
    // `id` is the sender's number for it; only texts have a value here.
    const auto toJson = [&](SaUint16T id, std::uint32_t type, const SaNtfValueT& value) {
        void* data = nullptr;
        SaUint16T size = 0;
        const bool isText = type == SA_NTF_VALUE_STRING &&
                            getPtrVal(alarm.notificationHandle, &value, &data, &size) == SA_AIS_OK;
        Json json;
        json["id"] = id;
        json["type"] = common::nameOf(type, kTypes);
        json["value"] = isText ? Json(textOf(data, size)) : Json();
        return json;
    };
    const auto list = [&](SaUint16T count, const auto* elements) {
        Json values = Json::array();
        for (SaUint16T i = 0; i < count; ++i) {
            const auto& [id, type, value] = elements[i];
            values.push_back(toJson(id, type, value));
        }
        return values;
    };
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    Json correlated = Json::array(); // ids as texts: many readers keep only 53 bits of a number
    for (SaUint16T i = 0; i < header.numCorrelatedNotifications; ++i) {
        correlated.push_back(std::to_string(header.correlatedNotifications[i]));
    }
    Json problems = Json::array();
    for (SaUint16T i = 0; i < alarm.numSpecificProblems; ++i) {
        const auto& [id, classId, type, value] = alarm.specificProblems[i];
        problems.push_back(toJson(id, type, value));
    }
    const SaNtfThresholdInformationT& threshold = *alarm.thresholdInformation;
    Json json;
    json["text"] = textOf(header.additionalText, header.lengthAdditionalText);
    json["info"] = list(header.numAdditionalInfo, header.additionalInfo);
    json["repairActions"] = list(alarm.numProposedRepairActions, alarm.proposedRepairActions);
    json["notificationId"] = std::to_string(*header.notificationId);
    json["notifyingObject"] = textOf(*header.notifyingObject);
    json["eventType"] = common::nameOf(*header.eventType - SA_NTF_ALARM_NOTIFICATIONS_START,
                                       common::kEventTypeNames);
    json["probableCause"] = *alarm.probableCause;
    json["trend"] = common::nameOf(*alarm.trend, kTrends);
    json["threshold"] =
        toJson(threshold.thresholdId, threshold.thresholdValueType, threshold.thresholdValue);
    json["specificProblems"] = std::move(problems);
    json["monitoredAttributes"] = list(alarm.numMonitoredAttributes, alarm.monitoredAttributes);
    json["correlatedNotifications"] = std::move(correlated);
    return json;
}

} // namespace

std::string nameText(const std::string& object) {
    const std::size_t size = object.size();
    const std::string name = inQuotes(object.substr(0, kLongestObject));
    return size <= kLongestObject
               ? name
               : name + " (another object: the first " + std::to_string(kLongestObject) +
                     " of the " + std::to_string(size) + " bytes given)";
}

std::string classText(const SaNtfClassIdT& id) {
    return (id.vendorId == DOLQCTL_VENDOR_ID ? "" : std::to_string(id.vendorId) + ':') +
           std::to_string(id.majorId) + '/' + std::to_string(id.minorId);
}

void AlarmReader::read(const std::function<void()>& begin,
                       const std::function<void(Notification&&)>& take) {
    const auto given = m_given;
    for (int session = 1;; ++session) {
        try {
            begin();
            m_given = given;
            return readOnce(take);
        } catch (const NtfError& error) {
            if (session == kSessions) {
                throw CommandError(error.what() + std::string("; tried in ") +
                                   std::to_string(kSessions) + " sessions, see 'dolqctl doctor'");
            }
        }
    }
}

void AlarmReader::readOnce(const std::function<void(Notification&&)>& take) {
    Ntf ntf;
    auto* const readNext = ntf.function<decltype(saNtfNotificationReadNext)>(kReadNext);
    auto* const getPtrVal = ntf.function<decltype(saNtfPtrValGet)>("saNtfPtrValGet");
    auto* const free = ntf.function<decltype(saNtfNotificationFree)>("saNtfNotificationFree");
    // ASCII, since a service may replace bytes that are not UTF-8; short enough for one with
    // shorter names. It matches a name that occurs anywhere in another.
    const auto isBeyond = [](char c) { return static_cast<unsigned char>(c) > 0x7F; };
    const auto end = std::find_if(m_object.begin(), m_object.end(), isBeyond);
    const std::string name = std::string(m_object.begin(), end).substr(0, kLongestFilter);
    SaNtfAlarmNotificationFilterT filter{};
    ntf.ask<decltype(saNtfAlarmNotificationFilterAllocate)>(
        "saNtfAlarmNotificationFilterAllocate", [&](auto* allocate) {
            return allocate(ntf.handle(), &filter, 0, name.empty() ? 0 : 1, 0, 0, 0, 0, 0);
        });
    if (!name.empty()) {
        SaNameT& object = *filter.notificationFilterHeader.notificationObjects;
        object.length = static_cast<SaUint16T>(name.size());
        std::memcpy(object.value, name.data(), name.size());
    }
    SaNtfSearchCriteriaT criteria{};
    criteria.searchMode = SA_NTF_SEARCH_ONLY_FILTER;
    SaNtfNotificationTypeFilterHandlesT filters{};
    filters.alarmFilterHandle = filter.notificationFilterHandle;
    SaNtfReadHandleT reading = 0;
    ntf.ask<decltype(saNtfNotificationReadInitialize)>(
        "saNtfNotificationReadInitialize",
        [&](auto* initialize) { return initialize(criteria, &filters, &reading); });
    SaNtfNotificationsT notification{};
    SaAisErrorT before = SA_AIS_OK;
    SaAisErrorT answer = SA_AIS_OK;
    const auto next = [&] {
        before = answer;
        const Clock::time_point start = Clock::now();
        answer = readNext(reading, SA_NTF_SEARCH_YOUNGER, &notification);
        // A time-out by another name: the next call would leave a notification out.
        const bool isLate = answer == SA_AIS_ERR_TRY_AGAIN && Clock::now() - start >= kTimeout;
        return isLate ? SA_AIS_ERR_TIMEOUT : answer;
    };
    SaAisErrorT result = SA_AIS_OK;
    while ((result = ask(kReadNext, next)) == SA_AIS_OK) {
        const SaNtfAlarmNotificationT& alarm = notification.notification.alarmNotification;
        const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
        Notification record{*header.notificationId,
                            static_cast<std::int64_t>(*header.eventTime),
                            textOf(*header.notificationObject),
                            *header.notificationClassId,
                            *alarm.perceivedSeverity,
                            {}};
        if (isMeant(record.object) && m_given.emplace(record.id, record.eventTimeNs).second) {
            record.content = contentOf(alarm, getPtrVal);
            take(std::move(record));
        }
        free(alarm.notificationHandle);
    }
    if (result != SA_AIS_ERR_NOT_EXIST) {
        throw NtfError(kReadNext, result);
    }
    if (before == SA_AIS_ERR_TRY_AGAIN) { // the end may be that of a service that has restarted
        throw NtfError(std::string(kReadNext) + ", right after \"try again\",", result);
    }
}

bool AlarmReader::isMeant(const std::string& object) const {
    if (m_object.empty()) {
        return true;
    }
    // In JSON, where what is not UTF-8 is the same for all services.
    std::string meant = common::jsonString(m_object);
    meant.pop_back();
    const std::string given = common::jsonString(object);
    return given.compare(0, meant.size(), meant) == 0 &&
           (given[meant.size()] == ',' || given[meant.size()] == '"');
}

} // namespace dolqctl
