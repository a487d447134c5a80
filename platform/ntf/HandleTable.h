#pragma once

#include <filesystem>
#include <map>
#include <memory>

#include <saNtf.h>

namespace platform::ntf {

/// What a session gives handles for: a notification, a filter, a reading.
class SessionObject {
public:
    SessionObject() = default;
    virtual ~SessionObject() = default;
    SessionObject(const SessionObject&) = delete;
    SessionObject& operator=(const SessionObject&) = delete;
};

/// The process's open sessions and their objects. No number is handed out twice, whatever kind of
/// handle it is, so that one kept too long or mistaken for another kind is always unknown.
/// Thread safe; what a call found stays alive until that call lets go of it.
class HandleTable {
public:
    /// Of a session.
    using LogPath = std::shared_ptr<const std::filesystem::path>;

    /// What a handle leads to; empty when it is unknown.
    template <typename Kind> struct Entry {
        SaNtfHandleT owner = 0;
        LogPath log;
        std::shared_ptr<Kind> object;
    };

    SaNtfHandleT open(LogPath log);

    /// Closes the session and releases its objects. False when it is unknown.
    bool close(SaNtfHandleT session);

    /// 0 when `owner` is unknown.
    SaUint64T add(SaNtfHandleT owner, std::shared_ptr<SessionObject> object);

    /// Of another kind: empty.
    template <typename Kind> Entry<Kind> find(SaUint64T handle) const {
        const auto entry = findAny(handle);
        auto object = std::dynamic_pointer_cast<Kind>(entry.object);
        return object == nullptr ? Entry<Kind>{} : Entry<Kind>{entry.owner, entry.log, object};
    }

    /// False when it is unknown or of another kind.
    template <typename Kind> bool remove(SaUint64T handle) {
        return find<Kind>(handle).object != nullptr && erase(handle);
    }

private:
    Entry<SessionObject> findAny(SaUint64T handle) const;
    bool erase(SaUint64T handle);

    // All guarded by the service's mutex. Maps, which need no memory when they are empty: the table
    // is never destroyed, but the library may be unloaded.
    SaUint64T m_lastHandle = 0;
    std::map<SaNtfHandleT, LogPath> m_logs;
    std::map<SaUint64T, Entry<SessionObject>> m_objects;
};

} // namespace platform::ntf
