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

bool HandleTable::close(SaNtfHandleT session) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    if (m_logs.erase(session) == 0) {
        return false;
    }
    for (auto entry = m_objects.begin(); entry != m_objects.end();) {
        entry = entry->second.owner == session ? m_objects.erase(entry) : std::next(entry);
    }
    return true;
}

SaUint64T HandleTable::add(SaNtfHandleT owner, std::shared_ptr<SessionObject> object) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    const auto log = m_logs.find(owner);
    if (log == m_logs.end()) {
        return 0;
    }
    m_objects.emplace(m_lastHandle + 1,
                      Entry<SessionObject>{owner, log->second, std::move(object)});
    return ++m_lastHandle;
}

HandleTable::Entry<SessionObject> HandleTable::findAny(SaUint64T handle) const {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    const auto entry = m_objects.find(handle);
    return entry == m_objects.end() ? Entry<SessionObject>{} : entry->second;
}

bool HandleTable::erase(SaUint64T handle) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    return m_objects.erase(handle) != 0;
}

} // namespace platform::ntf
