#pragma once

#include <filesystem>
#include <map>
#include <memory>

#include <saNtf.h>

#include "platform/ntf/AlarmNotification.h"

namespace platform::ntf {

/// The process's open NTF handles and their notifications. No number is handed out twice, as
/// neither kind of handle, so that one kept too long or mistaken for the other is always unknown.
/// Thread safe; what a call found stays alive until that call lets go of it.
class HandleTable {
public:
    /// Of a session.
    using LogPath = std::shared_ptr<const std::filesystem::path>;

    /// What a notification handle leads to; both empty when it is unknown.
    struct Entry {
        SaNtfHandleT owner = 0;
        LogPath log;
        std::shared_ptr<AlarmNotification> notification;
    };

    SaNtfHandleT open(LogPath log);

    /// Closes the handle and releases its notifications. False when it is unknown.
    bool close(SaNtfHandleT handle);

    /// 0 when `owner` is unknown.
    SaNtfNotificationHandleT add(SaNtfHandleT owner,
                                 std::shared_ptr<AlarmNotification> notification);

    Entry find(SaNtfNotificationHandleT handle) const;

    /// False when it is unknown.
    bool remove(SaNtfNotificationHandleT handle);

private:
    // All guarded by the service's mutex. Maps, which need no memory when they are empty: the table
    // is never destroyed, but the library may be unloaded.
    SaUint64T m_lastHandle = 0;
    std::map<SaNtfHandleT, LogPath> m_logs;
    std::map<SaNtfNotificationHandleT, Entry> m_notifications;
};

} // namespace platform::ntf
