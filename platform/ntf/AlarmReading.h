#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <saNtf.h>
#include <sys/types.h>

#include "platform/ntf/AlarmNotification.h"
#include "platform/ntf/Fields.h"
#include "platform/ntf/HandleTable.h"

namespace platform::ntf {

/// Which alarms are to be read: those of the objects that its client writes into it. Calls on one
/// filter must not overlap.
class AlarmFilter final : public SessionObject {
public:
    explicit AlarmFilter(SaUint16T numObjects) : m_objects(numObjects) {}

    /// Fills all of `filter` but its handle.
    void describe(SaNtfAlarmNotificationFilterT& filter) {
        filter = {};
        filter.notificationFilterHeader.numNotificationObjects =
            static_cast<SaUint16T>(m_objects.size());
        filter.notificationFilterHeader.notificationObjects =
            m_objects.empty() ? nullptr : m_objects.data();
    }

    bool isValid() const { return std::all_of(m_objects.begin(), m_objects.end(), ntf::isValid); }

    const std::vector<SaNameT>& objects() const { return m_objects; }

private:
    std::vector<SaNameT> m_objects; ///< never resized
};

/// The alarms of the notification log as it is when the reading begins, the oldest first. Opens the
/// log for each piece of it, so that there is no descriptor that a program could close or a forked
/// process share. Calls on one reading must not overlap.
class AlarmReading final : public SessionObject {
public:
    /// `filter` is valid. A log that is not there has no alarms. Throws std::system_error when the
    /// log cannot be read.
    AlarmReading(HandleTable::LogPath log, const AlarmFilter& filter);

    /// Null at the end. Throws std::system_error when the log cannot be read, or is another one or
    /// shorter than it was.
    std::shared_ptr<AlarmNotification> next();

private:
    std::optional<std::string_view> nextLine();
    bool readOn();
    bool isWanted(std::string_view text) const;

    const HandleTable::LogPath m_log;
    std::vector<std::string> m_objects; ///< as texts within JSON strings
    dev_t m_device = 0;
    ino_t m_file = 0;
    off_t m_at = 0; ///< where the log was read to
    off_t m_end = 0;
    std::string m_text;         ///< read, and not yet used up
    std::size_t m_nextLine = 0; ///< where in it
};

} // namespace platform::ntf
