#include "alarms/AlarmList.h"

#include <utility>

namespace dolqctl {

namespace {

constexpr std::uint32_t kCleared = 0; // SA_NTF_SEVERITY_CLEARED

/// "32473/1/17 managedElement=1,board=3"
std::string keyOf(const platform::ntf::AlarmRecord& record) {
    return std::to_string(record.vendorId) + '/' + std::to_string(record.majorId) + '/' +
           std::to_string(record.minorId) + ' ' + record.notificationObject;
}

} // namespace

AlarmList::Applied AlarmList::apply(platform::ntf::AlarmRecord record) {
    const std::string key = keyOf(record);
    if (record.perceivedSeverity == kCleared) {
        const auto found = m_active.find(key);
        if (found == m_active.end()) {
            ++m_ceasesWithoutAlarm;
            return {};
        }
        m_ceased = std::move(found->second);
        m_ceased.endTimeNs = record.eventTimeNs;
        m_active.erase(found);
        return {"ceased", &m_ceased};
    }
    Alarm& alarm = m_active[key];
    if (alarm.timesRaised++ == 0) {
        alarm.firstTimeNs = record.eventTimeNs;
    }
    alarm.raised = std::move(record);
    return {alarm.timesRaised == 1 ? "raised" : "again", &alarm};
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
