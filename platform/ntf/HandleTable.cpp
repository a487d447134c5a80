#include "platform/ntf/HandleTable.h"

#include <iterator>
#include <mutex>
#include <utility>

#include "platform/ntf/ServiceMutex.h"

namespace platform::ntf {

SaNtfHandleT HandleTable::open(LogPath log) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    m_logs.emplace(m_lastHandle + 1, std::move(log));
    return ++m_lastHandle;
}

bool HandleTable::close(SaNtfHandleT handle) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    if (m_logs.erase(handle) == 0) {
        return false;
    }
    for (auto entry = m_notifications.begin(); entry != m_notifications.end();) {
        entry = entry->second.owner == handle ? m_notifications.erase(entry) : std::next(entry);
    }
    return true;
}

SaNtfNotificationHandleT HandleTable::add(SaNtfHandleT owner,
                                          std::shared_ptr<AlarmNotification> notification) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    const auto log = m_logs.find(owner);
    if (log == m_logs.end()) {
        return 0;
    }
    m_notifications.emplace(m_lastHandle + 1, Entry{owner, log->second, std::move(notification)});
    return ++m_lastHandle;
}

HandleTable::Entry HandleTable::find(SaNtfNotificationHandleT handle) const {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    const auto entry = m_notifications.find(handle);
    return entry == m_notifications.end() ? Entry{} : entry->second;
}

bool HandleTable::remove(SaNtfNotificationHandleT handle) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    return m_notifications.erase(handle) != 0;
}

} // namespace platform::ntf
