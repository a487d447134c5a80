#include "alarms/AlarmList.h"

#include <utility>

namespace dolqctl {

namespace {

constexpr std::uint32_t kCleared = 0; // SA_NTF_SEVERITY_CLEARED
constexpr char kCorrelationPrefix[] = "CI=";

bool isCorrelation(const std::string& entry) { return entry.rfind(kCorrelationPrefix, 0) == 0; }

/// "32473/1/17 managedElement=1,board=3"
std::string keyOf(const platform::ntf::AlarmRecord& record) {
    return std::to_string(record.vendorId) + '/' + std::to_string(record.majorId) + '/' +
           std::to_string(record.minorId) + ' ' + record.notificationObject;
}

void takeWhatItSays(const platform::ntf::AlarmRecord& record, Alarm& alarm) {
    alarm.severity = record.perceivedSeverity;
    alarm.lastTimeNs = record.eventTimeNs;
    alarm.text = record.additionalText;
    alarm.correlationInfo.clear();
    alarm.info.clear();
    for (const platform::ntf::Element& element : record.additionalInfo) {
        std::string entry = element.value.value_or("");
        if (&element == &record.additionalInfo.front() && isCorrelation(entry)) {
            alarm.correlationInfo = std::move(entry);
        } else {
            alarm.info.push_back(std::move(entry));
        }
    }
    alarm.programGroup = record.proposedRepairActions.empty()
                             ? std::string()
                             : record.proposedRepairActions.front().value.value_or("");
}

} // namespace

AlarmList::Applied AlarmList::apply(const platform::ntf::AlarmRecord& record) {
    std::string key = keyOf(record);
    auto found = m_active.find(key);
    if (record.perceivedSeverity == kCleared) {
        if (found == m_active.end()) {
            ++m_ceasesWithoutAlarm;
            return {};
        }
        m_ceased = std::move(found->second);
        m_ceased.endTimeNs = record.eventTimeNs;
        m_active.erase(found);
        return {Change::Ceased, &m_ceased};
    }
    const bool isNew = found == m_active.end();
    if (isNew) {
        found = m_active.emplace(std::move(key), Alarm()).first;
        Alarm& alarm = found->second;
        alarm.object = record.notificationObject;
        alarm.vendorId = record.vendorId;
        alarm.majorId = record.majorId;
        alarm.minorId = record.minorId;
        alarm.firstTimeNs = record.eventTimeNs;
    }
    takeWhatItSays(record, found->second);
    ++found->second.timesRaised;
    return {isNew ? Change::Raised : Change::RaisedAgain, &found->second};
}

std::vector<const Alarm*> AlarmList::active() const {
    std::vector<const Alarm*> alarms;
    alarms.reserve(m_active.size());
    for (const auto& entry : m_active) {
        alarms.push_back(&entry.second);
    }
    return alarms;
}

} // namespace dolqctl
