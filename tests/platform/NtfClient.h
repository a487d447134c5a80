#pragma once

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <saNtf.h>

#include "support/TestSupport.h"

/// Writes a code that the enumeration itself could not hold.
template <typename Enumeration> void setCode(Enumeration& field, std::uint32_t code) {
    std::memcpy(&field, &code, sizeof code);
}

inline void setName(SaNameT& name, const std::string& text) {
    name.length = static_cast<SaUint16T>(text.size());
    text.copy(reinterpret_cast<char*>(name.value), sizeof name.value);
}

inline SaNtfHandleT initialize() {
    SaNtfHandleT handle = 0;
    SaVersionT version = {'A', 1, 1};
    EXPECT_EQ(saNtfInitialize(&handle, nullptr, &version), SA_AIS_OK);
    return handle;
}

/// An alarm that can be sent, with two entries of additional information and one repair action.
inline SaNtfAlarmNotificationT allocateAlarm(SaNtfHandleT handle,
                                             const std::string& object = "managedElement=1,board=3",
                                             const std::string& text = "text") {
    SaNtfAlarmNotificationT alarm{};
    const auto length = static_cast<SaUint16T>(text.size() + 1);
    EXPECT_EQ(saNtfAlarmNotificationAllocate(handle, &alarm, 0, length, 2, 0, 0, 1, -1), SA_AIS_OK);
    *alarm.notificationHeader.eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
    setName(*alarm.notificationHeader.notificationObject, object);
    text.copy(alarm.notificationHeader.additionalText, text.size());
    *alarm.perceivedSeverity = SA_NTF_SEVERITY_CRITICAL;
    *alarm.probableCause = SA_NTF_UNSPECIFIED_REASON;
    return alarm;
}

/// Gives `value` the bytes of `text`, with its NUL.
inline void setString(const SaNtfAlarmNotificationT& alarm, SaNtfValueT& value,
                      const std::string& text) {
    void* data = nullptr;
    const auto size = static_cast<SaUint16T>(text.size() + 1);
    ASSERT_EQ(saNtfPtrValAllocate(alarm.notificationHandle, size, &data, &value), SA_AIS_OK);
    std::memcpy(data, text.c_str(), size);
}

class Ntf : public testing::Test {
protected:
    ~Ntf() override { EXPECT_EQ(saNtfFinalize(m_handle), SA_AIS_OK); }

    std::vector<std::string> logLines() const { return linesOf(m_log); }

    /// What the service answers to a client that has this log.
    static SaAisErrorT sendTo(const std::filesystem::path& log) {
        const ScopedEnvironment environment("RUXA_NTF_LOG", log.c_str());
        const SaNtfHandleT handle = initialize();
        const SaAisErrorT result = saNtfNotificationSend(allocateAlarm(handle).notificationHandle);
        EXPECT_EQ(saNtfFinalize(handle), SA_AIS_OK);
        return result;
    }

    const TemporaryFolder m_temporary;
    const std::filesystem::path& m_folder = m_temporary.path();
    const std::filesystem::path m_log = m_folder / "log.jsonl";
    const ScopedEnvironment m_variable{"RUXA_NTF_LOG", m_log.c_str()};
    SaNtfHandleT m_handle = initialize();
};
