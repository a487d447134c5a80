#include "alarms/AlarmReader.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>

#include "Output.h"
#include "common/Escape.h"

namespace dolqctl {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kSessions = 4;
constexpr std::size_t kBatch = 100; // a batch is a call, so that a call takes no second
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

/// A reading in a session. A call that was left behind still uses it.
class Reading {
public:
    explicit Reading(Ntf& ntf)
        : m_readNext(ntf.function<decltype(saNtfNotificationReadNext)>(kReadNext)),
          m_getPtrVal(ntf.function<decltype(saNtfPtrValGet)>("saNtfPtrValGet")),
          m_free(ntf.function<decltype(saNtfNotificationFree)>("saNtfNotificationFree")) {}

    SaNtfAlarmNotificationFilterT filter{};
    SaNtfReadHandleT handle = 0;
    std::vector<Notification> batch;
    bool isEndDoubtful = false; ///< it may be that of the list of a service that has restarted

    SaAisErrorT readBatch() {
        while (batch.size() < kBatch) {
            const SaAisErrorT before = m_answer;
            const Clock::time_point start = Clock::now();
            SaNtfNotificationsT notification{};
            m_answer = m_readNext(handle, SA_NTF_SEARCH_YOUNGER, &notification);
            if (m_answer != SA_AIS_OK) {
                isEndDoubtful = before == SA_AIS_ERR_TRY_AGAIN;
                // A time-out by another name: the next call would leave a notification out.
                const bool isLate =
                    m_answer == SA_AIS_ERR_TRY_AGAIN && Clock::now() - start >= kTimeout;
                return isLate ? SA_AIS_ERR_TIMEOUT : m_answer;
            }
            batch.push_back(recordOf(notification.notification.alarmNotification));
            m_free(notification.notification.alarmNotification.notificationHandle);
        }
        return SA_AIS_OK;
    }

private:
    Notification recordOf(SaNtfAlarmNotificationT& alarm) const {
        const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
        Notification record;
        record.id = *header.notificationId;
        record.eventTimeNs = static_cast<std::int64_t>(*header.eventTime);
        record.eventType = *header.eventType;
        record.object = textOf(*header.notificationObject);
        record.notifyingObject = textOf(*header.notifyingObject);
        record.classId = *header.notificationClassId;
        record.severity = *alarm.perceivedSeverity;
        record.cause = *alarm.probableCause;
        record.trend = *alarm.trend;
        const auto list = [&](SaUint16T count, auto* elements) {
            std::vector<Value> values;
            for (SaUint16T i = 0; i < count; ++i) {
                auto& [id, type, value] = elements[i];
                values.push_back(valueOf(alarm, id, type, value));
            }
            return values;
        };
        record.text = textOf(header.additionalText, header.lengthAdditionalText);
        record.info = list(header.numAdditionalInfo, header.additionalInfo);
        record.repairActions = list(alarm.numProposedRepairActions, alarm.proposedRepairActions);
        record.monitoredAttributes = list(alarm.numMonitoredAttributes, alarm.monitoredAttributes);
        for (SaUint16T i = 0; i < alarm.numSpecificProblems; ++i) {
            auto& [id, classId, type, value] = alarm.specificProblems[i];
            record.specificProblems.push_back(valueOf(alarm, id, type, value));
        }
        SaNtfThresholdInformationT& threshold = *alarm.thresholdInformation;
        record.threshold = valueOf(alarm, threshold.thresholdId, threshold.thresholdValueType,
                                   threshold.thresholdValue);
        record.correlated = {header.correlatedNotifications,
                             header.correlatedNotifications + header.numCorrelatedNotifications};
        return record;
    }

    Value valueOf(const SaNtfAlarmNotificationT& alarm, std::uint16_t id, std::uint32_t type,
                  SaNtfValueT& value) const {
        void* data = nullptr;
        SaUint16T size = 0;
        const bool isText =
            type == SA_NTF_VALUE_STRING &&
            m_getPtrVal(alarm.notificationHandle, &value, &data, &size) == SA_AIS_OK;
        return {id, type, isText ? std::optional(textOf(data, size)) : std::nullopt};
    }

    decltype(saNtfNotificationReadNext)* const m_readNext;
    decltype(saNtfPtrValGet)* const m_getPtrVal;
    decltype(saNtfNotificationFree)* const m_free;
    SaAisErrorT m_answer = SA_AIS_OK;
};

/// What the service can be asked for: it matches a name that occurs anywhere in another. ASCII,
/// since a service may replace bytes that are not UTF-8; short enough for one with shorter names.
std::string filterOf(const std::string& object) {
    constexpr std::size_t kMost = 255;
    const auto isBeyond = [](char c) { return static_cast<unsigned char>(c) > 0x7F; };
    const auto end = std::find_if(object.begin(), object.end(), isBeyond);
    return std::string(object.begin(), end).substr(0, kMost);
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
    Ntf ntf(m_waiting);
    const auto reading = std::make_shared<Reading>(ntf);
    const std::string name = filterOf(m_object);
    auto* const allocate = ntf.function<decltype(saNtfAlarmNotificationFilterAllocate)>(
        "saNtfAlarmNotificationFilterAllocate");
    ntf.call("saNtfAlarmNotificationFilterAllocate", [=, session = ntf.handle()] {
        const SaUint16T objects = name.empty() ? 0 : 1;
        return allocate(session, &reading->filter, 0, objects, 0, 0, 0, 0, 0);
    });
    if (!name.empty()) {
        SaNameT& object = *reading->filter.notificationFilterHeader.notificationObjects;
        object.length = static_cast<SaUint16T>(name.size());
        std::memcpy(object.value, name.data(), name.size());
    }
    auto* const begin =
        ntf.function<decltype(saNtfNotificationReadInitialize)>("saNtfNotificationReadInitialize");
    ntf.call("saNtfNotificationReadInitialize", [=] {
        SaNtfSearchCriteriaT criteria{};
        criteria.searchMode = SA_NTF_SEARCH_ONLY_FILTER;
        SaNtfNotificationTypeFilterHandlesT filters{};
        filters.alarmFilterHandle = reading->filter.notificationFilterHandle;
        return begin(criteria, &filters, &reading->handle);
    });
    for (SaAisErrorT answer = SA_AIS_OK; answer == SA_AIS_OK;) {
        answer = ntf.call(
            kReadNext, [=] { return reading->readBatch(); }, SA_AIS_ERR_NOT_EXIST);
        for (Notification& notification : reading->batch) {
            if (isMeant(notification.object) &&
                m_given.emplace(notification.id, notification.eventTimeNs).second) {
                take(std::move(notification));
            }
        }
        reading->batch.clear();
    }
    if (reading->isEndDoubtful) {
        throw NtfError(std::string(kReadNext) + ", right after \"try again\",",
                       SA_AIS_ERR_NOT_EXIST);
    }
}

bool AlarmReader::isMeant(const std::string& object) const {
    // In JSON, where what is not UTF-8 is the same for all services.
    std::string meant = common::jsonString(m_object);
    meant.pop_back();
    const std::string given = common::jsonString(object);
    return m_object.empty() || (given.compare(0, meant.size(), meant) == 0 &&
                                (given[meant.size()] == ',' || given[meant.size()] == '"'));
}

} // namespace dolqctl
