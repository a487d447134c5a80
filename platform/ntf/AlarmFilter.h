#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <saNtf.h>

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

    /// Of a valid filter.
    std::vector<std::string> objects() const {
        std::vector<std::string> texts(m_objects.size());
        std::transform(m_objects.begin(), m_objects.end(), texts.begin(), toText);
        return texts;
    }

private:
    std::vector<SaNameT> m_objects; ///< never resized
};

} // namespace platform::ntf
