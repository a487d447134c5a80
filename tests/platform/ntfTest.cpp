#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/resource.h>
#include <unistd.h>

#include "NtfClient.h"
#include "platform/ntf/LogPath.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// --- handles ---

TEST(NtfInitialize, AcceptsTheVersionsOfTheFirstRelease) {
    const std::pair<SaVersionT, SaAisErrorT> rows[] = {{{'A', 1, 0}, SA_AIS_OK},
                                                       {{'A', 1, 255}, SA_AIS_OK},
                                                       {{'A', 0, 1}, SA_AIS_ERR_VERSION},
                                                       {{'A', 2, 1}, SA_AIS_ERR_VERSION},
                                                       {{'B', 1, 1}, SA_AIS_ERR_VERSION}};
    for (auto [version, result] : rows) {
        SaNtfHandleT handle = 0;
        EXPECT_EQ(saNtfInitialize(&handle, nullptr, &version), result);
        EXPECT_EQ(std::string(&version.releaseCode, &version.releaseCode + 3), "A\1\1");
        EXPECT_EQ(saNtfFinalize(handle), result == SA_AIS_OK ? SA_AIS_OK : SA_AIS_ERR_BAD_HANDLE);
    }
    SaVersionT version = {'A', 1, 1};
    SaNtfHandleT handle = 0;
    EXPECT_EQ(saNtfInitialize(nullptr, nullptr, &version), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfInitialize(&handle, nullptr, nullptr), SA_AIS_ERR_INVALID_PARAM);
}

// --- the memory of a notification ---

TEST_F(Ntf, InitialisesAllMemory) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 2, 65535, 65534, 3, 4, 5, -1),
              SA_AIS_OK);
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    const auto isZero = [](const auto* field, std::size_t count = 1) {
        const std::string bytes(reinterpret_cast<const char*>(field), count * sizeof *field);
        return bytes.find_first_not_of('\0') == std::string::npos;
    };
    EXPECT_TRUE(isZero(header.eventType) && isZero(header.notificationObject) &&
                isZero(header.notifyingObject) && isZero(header.notificationClassId) &&
                isZero(header.notificationId) && isZero(alarm.probableCause) &&
                isZero(alarm.perceivedSeverity) && isZero(alarm.thresholdInformation) &&
                isZero(header.correlatedNotifications, 2) && isZero(header.additionalText, 65535) &&
                isZero(header.additionalInfo, 65534) && isZero(alarm.specificProblems, 3) &&
                isZero(alarm.monitoredAttributes, 4) && isZero(alarm.proposedRepairActions, 5));
    EXPECT_EQ(*alarm.trend, SA_NTF_TREND_NO_CHANGE);
    EXPECT_EQ(*header.eventTime, SA_TIME_UNKNOWN);
    EXPECT_TRUE(header.numCorrelatedNotifications == 2 && header.lengthAdditionalText == 65535 &&
                header.numAdditionalInfo == 65534 && alarm.numSpecificProblems == 3 &&
                alarm.numMonitoredAttributes == 4 && alarm.numProposedRepairActions == 5);
    EXPECT_EQ(saNtfAlarmNotificationAllocate(m_handle, nullptr, 0, 0, 0, 0, 0, 0, 0),
              SA_AIS_ERR_INVALID_PARAM);
}

TEST_F(Ntf, LimitsTheValuesOfANotificationTogether) {
    SaNtfAlarmNotificationT alarm{};
    EXPECT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, 0, 0, 0, 0, 0, -2),
              SA_AIS_ERR_TOO_BIG);
    const std::pair<SaInt16T, SaUint16T> rows[] = {{-1, 32767}, {0, 0}, {1000, 1000}};
    for (const auto& [asked, fitting] : rows) {
        ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, 0, 0, 0, 0, 0, asked),
                  SA_AIS_OK);
        EXPECT_EQ(alarm.notificationHeader.additionalText, nullptr);
        void* data = nullptr;
        SaNtfValueT value{};
        const auto allocate = [&](int size) {
            return saNtfPtrValAllocate(alarm.notificationHandle, static_cast<SaUint16T>(size),
                                       &data, &value);
        };
        EXPECT_TRUE(fitting == 0 ||
                    (allocate(1) == SA_AIS_OK && allocate(fitting - 1) == SA_AIS_OK));
        data = nullptr;
        EXPECT_EQ(allocate(1), SA_AIS_ERR_NO_SPACE) << asked;
        EXPECT_EQ(data, nullptr);
    }
}

TEST_F(Ntf, KeepsEachValueAndRefusesWhatIsNone) {
    const auto alarm = allocateAlarm(m_handle);
    SaNtfAdditionalInfoT* const info = alarm.notificationHeader.additionalInfo;
    const std::string texts[] = {"first", "the second"};
    for (int i = 0; i < 2; ++i) {
        info[i].infoType = SA_NTF_VALUE_STRING;
        setString(alarm, info[i].infoValue, texts[i]);
    }
    const auto valuesSent = [&] {
        EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
        const Json sent = Json::parse(logLines().back()).at("additionalInfo");
        return sent.at(0).at("value").dump() + ", " + sent.at(1).at("value").dump();
    };
    EXPECT_EQ(valuesSent(), R"("first", "the second")");
    info[0].infoValue.ptrVal.dataSize = 3;
    ++info[1].infoValue.ptrVal.dataSize;
    EXPECT_EQ(valuesSent(), R"("fir", null)");
    --info[1].infoValue.ptrVal.dataSize;
    ++info[1].infoValue.ptrVal.dataOffset;
    EXPECT_EQ(valuesSent(), R"("fir", null)");

    void* data = nullptr;
    SaNtfValueT value{};
    const SaNtfNotificationHandleT handle = alarm.notificationHandle;
    EXPECT_EQ(saNtfPtrValAllocate(handle, 0, &data, &value), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValAllocate(handle, 1, nullptr, &value), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValAllocate(handle, 1, &data, nullptr), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(data, nullptr);
}

// --- what Send checks ---

TEST_F(Ntf, SendChecksTheFields) {
    using Alarm = SaNtfAlarmNotificationT;
    using Header = SaNtfNotificationHeaderT;
    void (*const mistakes[])(Alarm&, Header&) = {
        [](Alarm&, Header& header) { header.notificationObject->length = 600; },
        [](Alarm&, Header& header) { header.notifyingObject->length = 65535; },
        [](Alarm&, Header& header) { header.additionalText[3] = '\0'; },
        [](Alarm&, Header& header) { header.additionalText[4] = '!'; },
        [](Alarm&, Header& header) { setCode(*header.eventType, 0x3fff); },
        [](Alarm&, Header& header) { setCode(*header.eventType, 0x4006); },
        [](Alarm& alarm, Header&) { setCode(*alarm.probableCause, 75); },
        [](Alarm& alarm, Header&) { setCode(*alarm.perceivedSeverity, 6); },
        [](Alarm& alarm, Header&) { setCode(*alarm.trend, 3); },
        [](Alarm&, Header& header) { setCode(header.additionalInfo[1].infoType, 15); },
        [](Alarm& alarm, Header&) { setCode(alarm.proposedRepairActions->actionValueType, 15); },
    };
    for (const auto& mistake : mistakes) {
        auto alarm = allocateAlarm(m_handle);
        mistake(alarm, alarm.notificationHeader);
        EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_ERR_INVALID_PARAM)
            << "row " << &mistake - mistakes;
    }
    EXPECT_EQ(logLines().size(), 0u);
    const auto alarm = allocateAlarm(m_handle, ""); // and each at its bound
    alarm.notificationHeader.notifyingObject->length = 599;
    setCode(*alarm.notificationHeader.eventType, 0x4005);
    setCode(*alarm.probableCause, 0);
    setCode(*alarm.perceivedSeverity, 0);
    setCode(*alarm.trend, 2);
    setCode(alarm.notificationHeader.additionalInfo[1].infoType, 14);
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
}

// --- the notification log ---

TEST_F(Ntf, SaysOnceWhyItRefusesToSend) {
    const fs::path folder = m_folder / "\x1B";
    fs::create_directory(folder);
    constexpr int kLimit = 10000; // of a file: stderr is one as well here
    std::ofstream(m_log) << std::string(kLimit, ' ');
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{kLimit, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(sendTo(folder), SA_AIS_ERR_LIBRARY);
        EXPECT_EQ(sendTo(m_log), SA_AIS_ERR_NO_RESOURCES);
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ruxa-ntf: no alarm can be written to '" + (m_folder / "\\x1B").string() +
                  "': Is a directory\nruxa-ntf: no alarm can be written to '" + m_log.string() +
                  "': no room is left on the disk, in the quota or within the file size limit\n");
}

TEST_F(Ntf, TakesTheLogsPathFromTheEnvironment) {
    const std::string folder = m_folder / "state";
    const struct {
        const char* log;
        std::string stateHome;
        const char* home;
        fs::path path;
    } rows[] = {
        {"/a/log", "/state", "/home/me", "/a/log"},
        {"log", "", "", fs::current_path() / "log"},
        {"", "/state", "/home/me", "/state/ruxa/notifications.jsonl"},
        {"", "relative", "/home/me", "/home/me/.local/state/ruxa/notifications.jsonl"},
        {"", folder, "", folder + "/ruxa/notifications.jsonl"},
        {"", "relative", "home", ""},
    };
    for (const auto& row : rows) {
        const ScopedEnvironment log("RUXA_NTF_LOG", row.log);
        const ScopedEnvironment stateHome("XDG_STATE_HOME", row.stateHome.c_str());
        const ScopedEnvironment home("HOME", row.home);
        EXPECT_EQ(platform::ntf::notificationLogPath(), row.path);
    }
    EXPECT_EQ(sendTo(folder + "/ruxa/notifications.jsonl"), SA_AIS_OK);
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
}

} // namespace
