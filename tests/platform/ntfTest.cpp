#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
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
    const struct {
        SaVersionT version;
        SaAisErrorT result;
    } rows[] = {{{'A', 1, 0}, SA_AIS_OK},          {{'A', 1, 1}, SA_AIS_OK},
                {{'A', 1, 255}, SA_AIS_OK},        {{'A', 0, 1}, SA_AIS_ERR_VERSION},
                {{'A', 2, 1}, SA_AIS_ERR_VERSION}, {{'A', 3, 1}, SA_AIS_ERR_VERSION},
                {{'B', 1, 1}, SA_AIS_ERR_VERSION}};
    for (const auto& row : rows) {
        SaVersionT version = row.version;
        SaNtfHandleT handle = 0;
        EXPECT_EQ(saNtfInitialize(&handle, nullptr, &version), row.result)
            << row.version.releaseCode << int{row.version.majorVersion};
        EXPECT_EQ(handle != 0, row.result == SA_AIS_OK);
        EXPECT_EQ(std::string(&version.releaseCode, &version.releaseCode + 3), "A\1\1");
        EXPECT_EQ(saNtfFinalize(handle), handle == 0 ? SA_AIS_ERR_BAD_HANDLE : SA_AIS_OK);
    }
    SaVersionT version = {'A', 1, 1};
    SaNtfHandleT handle = 0;
    EXPECT_EQ(saNtfInitialize(nullptr, nullptr, &version), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfInitialize(&handle, nullptr, nullptr), SA_AIS_ERR_INVALID_PARAM);
}

// --- the memory of a notification ---

TEST_F(Ntf, InitialisesAllMemory) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 2, 65535, 65535, 3, 4, 5, -1),
              SA_AIS_OK);
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    const auto isZero = [](const auto* field, std::size_t count = 1) {
        const auto* bytes = reinterpret_cast<const char*>(field);
        const std::size_t size = count * sizeof *field;
        return std::string(bytes, size) == std::string(size, '\0');
    };
    EXPECT_TRUE(isZero(header.eventType) && isZero(header.notificationObject) &&
                isZero(header.notifyingObject) && isZero(header.notificationClassId) &&
                isZero(header.notificationId) && isZero(alarm.probableCause) &&
                isZero(alarm.perceivedSeverity) && isZero(alarm.thresholdInformation));
    EXPECT_TRUE(isZero(header.correlatedNotifications, 2) && isZero(header.additionalText, 65535) &&
                isZero(header.additionalInfo, 65535) && isZero(alarm.specificProblems, 3) &&
                isZero(alarm.monitoredAttributes, 4) && isZero(alarm.proposedRepairActions, 5));
    EXPECT_EQ(*alarm.trend, SA_NTF_TREND_NO_CHANGE);
    EXPECT_EQ(*header.eventTime, SA_TIME_UNKNOWN);
    const std::vector<SaUint16T> counts = {
        header.numCorrelatedNotifications, header.lengthAdditionalText,
        header.numAdditionalInfo,          alarm.numSpecificProblems,
        alarm.numMonitoredAttributes,      alarm.numProposedRepairActions};
    EXPECT_EQ(counts, (std::vector<SaUint16T>{2, 65535, 65535, 3, 4, 5}));
    EXPECT_EQ(saNtfAlarmNotificationAllocate(m_handle, nullptr, 0, 0, 0, 0, 0, 0, 0),
              SA_AIS_ERR_INVALID_PARAM);
}

TEST_F(Ntf, LimitsTheValuesOfANotificationTogether) {
    for (const SaInt16T refused : {SaInt16T{-32768}, SaInt16T{-2}}) {
        SaNtfAlarmNotificationT alarm{};
        EXPECT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, 0, 0, 0, 0, 0, refused),
                  SA_AIS_ERR_TOO_BIG);
    }
    const struct {
        SaInt16T asked;
        std::vector<SaUint16T> fitting;
    } rows[] = {{-1, {32766, 1}}, {0, {}}, {1, {1}}, {1000, {1, 999}}, {32767, {32767}}};
    for (const auto& row : rows) {
        SaNtfAlarmNotificationT alarm{};
        ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, 0, 0, 0, 0, 0, row.asked),
                  SA_AIS_OK);
        EXPECT_EQ(alarm.notificationHeader.additionalText, nullptr);
        void* data = nullptr;
        SaNtfValueT value{};
        for (const SaUint16T size : row.fitting) {
            EXPECT_EQ(saNtfPtrValAllocate(alarm.notificationHandle, size, &data, &value),
                      SA_AIS_OK);
        }
        data = &value;
        value.uint64Val = 77;
        EXPECT_EQ(saNtfPtrValAllocate(alarm.notificationHandle, 1, &data, &value),
                  SA_AIS_ERR_NO_SPACE)
            << row.asked;
        EXPECT_TRUE(data == &value && value.uint64Val == 77);
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
    const struct {
        bool good;
        void (*change)(Alarm&, Header&);
    } rows[] = {
        {true, [](Alarm&, Header&) {}},
        {true, [](Alarm&, Header& header) { header.notificationObject->length = 0; }},
        {true, [](Alarm&, Header& header) { header.notificationObject->length = 599; }},
        {false, [](Alarm&, Header& header) { header.notificationObject->length = 600; }},
        {false, [](Alarm&, Header& header) { header.notifyingObject->length = 65535; }},
        {false, [](Alarm&, Header& header) { header.additionalText[3] = '\0'; }},
        {false, [](Alarm&, Header& header) { header.additionalText[4] = '!'; }},
        {false, [](Alarm&, Header& header) { setCode(*header.eventType, 0x3fff); }},
        {true, [](Alarm&, Header& header) { setCode(*header.eventType, 0x4005); }},
        {false, [](Alarm&, Header& header) { setCode(*header.eventType, 0x4006); }},
        {true, [](Alarm& alarm, Header&) { setCode(*alarm.probableCause, 0); }},
        {false, [](Alarm& alarm, Header&) { setCode(*alarm.probableCause, 75); }},
        {true, [](Alarm& alarm, Header&) { setCode(*alarm.perceivedSeverity, 0); }},
        {false, [](Alarm& alarm, Header&) { setCode(*alarm.perceivedSeverity, 6); }},
        {false, [](Alarm& alarm, Header&) { setCode(*alarm.perceivedSeverity, 0xffffffff); }},
        {true, [](Alarm& alarm, Header&) { setCode(*alarm.trend, 2); }},
        {false, [](Alarm& alarm, Header&) { setCode(*alarm.trend, 3); }},
        {true, [](Alarm&, Header& header) { setCode(header.additionalInfo[1].infoType, 14); }},
        {false, [](Alarm&, Header& header) { setCode(header.additionalInfo[1].infoType, 15); }},
        {false, [](Alarm& alarm,
                   Header&) { setCode(alarm.proposedRepairActions[0].actionValueType, 15); }},
    };
    std::size_t lines = 0;
    for (const auto& row : rows) {
        auto alarm = allocateAlarm(m_handle);
        row.change(alarm, alarm.notificationHeader);
        EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle),
                  row.good ? SA_AIS_OK : SA_AIS_ERR_INVALID_PARAM)
            << "row " << &row - rows;
        lines += row.good ? 1 : 0;
        EXPECT_EQ(logLines().size(), lines);
    }
}

// --- the notification log ---

TEST_F(Ntf, LogsTheWholeNotification) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, 10, 2, 0, 0, 1, -1), SA_AIS_OK);
    SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    *header.eventType = SA_NTF_ALARM_EQUIPMENT;
    setName(*header.notificationObject, "board=3");
    setName(*header.notifyingObject, std::string("shelf=1\0hidden", 14));
    *header.notificationClassId = {32473, 193, 65535};
    *header.eventTime = -1;
    std::strcpy(header.additionalText, "\"a\"\n\xC3\xA9 %s");
    *alarm.perceivedSeverity = SA_NTF_SEVERITY_MAJOR;
    *alarm.probableCause = SA_NTF_UNSPECIFIED_REASON;
    alarm.thresholdInformation->thresholdId = 255;
    alarm.proposedRepairActions[0].actionValueType = SA_NTF_VALUE_STRING; // and no value
    SaNtfAdditionalInfoT* info = header.additionalInfo;
    info[0].infoType = SA_NTF_VALUE_STRING;
    setString(alarm, info[0].infoValue, "CI=1");
    info[1].infoId = 7;
    info[1].infoType = SA_NTF_VALUE_BINARY;
    setString(alarm, info[1].infoValue, "bytes");

    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    ASSERT_EQ(logLines().size(), 1u);
    const std::string expected =
        R"({"notificationId":")" + std::to_string(*header.notificationId) +
        R"(","eventTime":"1969-12-31T23:59:59.999999Z","eventTimeNs":-1,"notificationType":"alarm",)"
        R"("eventType":"equipment","eventTypeCode":16388,)"
        R"("notificationObject":"board=3","notifyingObject":"shelf=1",)"
        R"("classId":{"vendorId":32473,"majorId":193,"minorId":65535},)"
        R"("perceivedSeverity":"major","perceivedSeverityCode":4,"probableCause":74,"trend":1,)"
        R"("thresholdId":255,"correlatedNotifications":[],"additionalText":"\"a\"\n)"
        "\xC3\xA9"
        R"( %s","additionalInfo":[{"infoId":0,"infoType":11,"value":"CI=1"},)"
        R"({"infoId":7,"infoType":13,"value":null}],)"
        R"("proposedRepairActions":[{"actionId":0,"actionValueType":11,"value":null}],)"
        R"("processId":)" +
        std::to_string(::getpid()) + R"(,"threadId":)" + std::to_string(::gettid()) + "}";
    EXPECT_EQ(logLines()[0], expected);

    // Sent again, it has an id and a time of its own.
    *header.eventTime = SA_TIME_UNKNOWN;
    header.notifyingObject->length = 0;
    const auto before = static_cast<std::int64_t>(std::time(nullptr)) * 1'000'000'000;
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const Json again = Json::parse(logLines().back());
    EXPECT_EQ(again.at("notificationId"), std::to_string(*header.notificationId));
    EXPECT_GT(*header.notificationId,
              std::stoull(Json::parse(expected).at("notificationId").get<std::string>()));
    EXPECT_GE(again.at("eventTimeNs"), before);
    EXPECT_EQ(again.at("notifyingObject"), "board=3");
}

TEST_F(Ntf, LogsTextsThatATerminalCanShow) {
    const auto alarm = allocateAlarm(m_handle);
    setName(*alarm.notificationHeader.notificationObject,
            "\"\\\x7F\xC2\x9B\xE2\x80\xAE\xE2\x80\xA8\x1B");
    setName(*alarm.notificationHeader.notifyingObject, "\xFF\xC3(\x80\xED\xA0\x80");
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const std::string wrong = "\xEF\xBF\xBD"; // U+FFFD
    EXPECT_NE(
        logLines().at(0).find(
            R"("notificationObject":"\"\\\u007f\u009b\u202e\u2028\u001b","notifyingObject":")" +
            wrong + wrong + "(" + wrong + wrong + wrong + wrong + "\""),
        std::string::npos)
        << logLines().at(0);
}

TEST_F(Ntf, SendsThoughTheProgramClosedItsDescriptors) {
    const auto alarm = allocateAlarm(m_handle);
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close_range(STDERR_FILENO + 1, 255, 0); // as daemons do
        int lost = 0;
        for (int i = 0; i < 20; ++i) {
            lost += saNtfNotificationSend(alarm.notificationHandle) == SA_AIS_OK ? 0 : 1;
        }
        ::_exit(lost + ::open("/dev/null", O_RDONLY) - (STDERR_FILENO + 1));
    }
    EXPECT_EQ(statusOf(child), 0); // none lost, and nothing left open
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    std::set<std::string> ids;
    for (const std::string& line : logLines()) {
        ids.insert(Json::parse(line).at("notificationId"));
    }
    EXPECT_EQ(ids.size(), 22u) << "a forked process repeats an id";
}

TEST_F(Ntf, SaysOnceWhyItRefusesToSend) {
    fs::permissions(m_folder, fs::perms::owner_all);
    constexpr int kLimit = 10000; // of a file: stderr is one as well here
    std::ofstream(m_folder / "file") << std::string(kLimit, ' ');
    fs::create_directory(m_folder / "\x1B");
    const auto limited = [](int resource, rlim_t limit, const fs::path& log) {
        rlimit before{};
        ::getrlimit(resource, &before);
        const rlimit now{limit, before.rlim_max};
        ::setrlimit(resource, &now);
        const SaAisErrorT result = sendTo(log);
        ::setrlimit(resource, &before);
        return result;
    };
    const auto asAnother = [](const fs::path& log) {
        if (::geteuid() != 0) { // only root can become another user
            return SA_AIS_ERR_LIBRARY;
        }
        EXPECT_EQ(::seteuid(65534), 0);
        const SaAisErrorT result = sendTo(log);
        EXPECT_EQ(::seteuid(0), 0);
        return result;
    };
    const struct {
        fs::path log;
        std::function<SaAisErrorT(const fs::path&)> send;
        SaAisErrorT result;
        const char* cause;
    } rows[] = {
        {"/dev/full", sendTo, SA_AIS_ERR_LIBRARY, "it is neither a regular file nor /dev/null"},
        {m_folder / "file/log", sendTo, SA_AIS_ERR_LIBRARY, "Not a directory"},
        {m_folder / "another", asAnother, SA_AIS_ERR_LIBRARY,
         ::geteuid() == 0 ? "Permission denied" : nullptr},
        {m_folder / "none left", [&](auto& log) { return limited(RLIMIT_NOFILE, 3, log); },
         SA_AIS_ERR_LIBRARY, "Too many open files"},
        {m_folder / "file", [&](auto& log) { return limited(RLIMIT_FSIZE, kLimit, log); },
         SA_AIS_ERR_NO_RESOURCES,
         "no room is left on the disk, in the quota or within the file size limit"},
        {m_folder / "\x1B", sendTo, SA_AIS_ERR_LIBRARY, "Is a directory"},
    };
    testing::internal::CaptureStderr();
    std::string expected;
    for (const auto& row : rows) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(row.send(row.log), row.result) << row.log;
        }
        const std::string name = row.log.filename() == "\x1B" ? m_folder / "\\x1B" : row.log;
        expected += row.cause == nullptr ? ""
                                         : "ruxa-ntf: no alarm can be written to '" + name +
                                               "': " + row.cause + '\n';
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST_F(Ntf, FollowsWhateverTheLogEndsWith) {
    const auto alarm = allocateAlarm(m_handle);
    std::size_t lines = 0;
    for (const char* end : {"", "what is not ours", "\xEF\xBB\xBF", "{\"notificationId\":"}) {
        std::ofstream(m_log, std::ios::app) << end;
        EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
        lines += *end != '\0' ? 2 : 1;
        EXPECT_EQ(logLines().size(), lines) << end;
        EXPECT_TRUE(Json::accept(logLines().back())) << end;
    }
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
        if (row.path.empty()) { // no place for a log, no session
            testing::internal::CaptureStderr();
            for (int i = 0; i < 2; ++i) {
                SaNtfHandleT handle = 0;
                SaVersionT version = {'A', 1, 1};
                EXPECT_EQ(saNtfInitialize(&handle, nullptr, &version), SA_AIS_ERR_LIBRARY);
            }
            const std::string said = testing::internal::GetCapturedStderr();
            EXPECT_EQ(said.find("ruxa-ntf: no alarm can be sent: set RUXA_NTF_LOG"), 0u);
            EXPECT_EQ(said.find('\n'), said.size() - 1);
        }
    }
    EXPECT_EQ(sendTo(folder + "/ruxa/notifications.jsonl"), SA_AIS_OK);
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
}

} // namespace
