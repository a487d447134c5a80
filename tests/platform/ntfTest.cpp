#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/ntf/log/AlarmRecord.h"
#include "platform/ntf/log/NotificationLog.h"
#include "saNtf.h"

namespace {

namespace fs = std::filesystem;
using platform::ntf::ParsedLine;
using platform::ntf::parseLine;

/// Sets environment variables (an empty text unsets) and restores them at the end of the scope.
class Environment {
public:
    using Values = std::map<std::string, std::string>;
    explicit Environment(const Values& values) {
        for (const auto& [name, value] : values) {
            const char* before = std::getenv(name.c_str());
            m_before[name] = before == nullptr ? "" : before;
            set(name, value);
        }
    }
    ~Environment() {
        for (const auto& [name, value] : m_before) {
            set(name, value);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    static void set(const std::string& name, const std::string& value) {
        if (value.empty()) {
            ::unsetenv(name.c_str());
        } else {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    Values m_before;
};

/// Writes a code that the enumeration itself could not hold.
template <typename Enumeration> void setCode(Enumeration& field, std::uint32_t code) {
    std::memcpy(&field, &code, sizeof code);
}

void setName(SaNameT& name, const std::string& text) {
    name.length = static_cast<SaUint16T>(text.size());
    text.copy(reinterpret_cast<char*>(name.value), sizeof name.value);
}

SaNtfHandleT initialize() {
    SaNtfHandleT handle = 0;
    SaVersionT version = {'A', 1, 1};
    EXPECT_EQ(saNtfInitialize(&handle, nullptr, &version), SA_AIS_OK);
    return handle;
}

/// An alarm that can be sent: text "text", two entries of additional information, one repair
/// action.
SaNtfAlarmNotificationT allocateAlarm(SaNtfHandleT handle) {
    SaNtfAlarmNotificationT alarm{};
    EXPECT_EQ(saNtfAlarmNotificationAllocate(handle, &alarm, 0, sizeof "text", 2, 0, 0, 1, -1),
              SA_AIS_OK);
    *alarm.notificationHeader.eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
    setName(*alarm.notificationHeader.notificationObject, "managedElement=1,board=3");
    std::strcpy(alarm.notificationHeader.additionalText, "text");
    *alarm.perceivedSeverity = SA_NTF_SEVERITY_CRITICAL;
    *alarm.probableCause = SA_NTF_UNSPECIFIED_REASON;
    return alarm;
}

/// Gives `value` the bytes of `text`, with its NUL.
void setString(const SaNtfAlarmNotificationT& alarm, SaNtfValueT& value, const std::string& text) {
    void* data = nullptr;
    const auto size = static_cast<SaUint16T>(text.size() + 1);
    ASSERT_EQ(saNtfPtrValAllocate(alarm.notificationHandle, size, &data, &value), SA_AIS_OK);
    std::memcpy(data, text.c_str(), size);
}

class Ntf : public testing::Test {
protected:
    Ntf() {
        std::string name = (fs::temp_directory_path() / "ntfTest.XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        m_log = m_folder / "log.jsonl";
        ::setenv("RUXA_NTF_LOG", m_log.c_str(), 1);
        m_handle = initialize();
    }
    ~Ntf() override {
        EXPECT_EQ(saNtfFinalize(m_handle), SA_AIS_OK);
        fs::remove_all(m_folder);
    }

    std::vector<std::string> logLines() const {
        std::ifstream log(m_log);
        std::vector<std::string> lines;
        for (std::string line; std::getline(log, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    fs::path m_folder;
    fs::path m_log;
    SaNtfHandleT m_handle = 0;
};

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

TEST_F(Ntf, RefusesHandlesThatAreNotOpen) {
    const SaNtfHandleT finalized = initialize();
    const auto lost = allocateAlarm(finalized);
    EXPECT_EQ(saNtfFinalize(finalized), SA_AIS_OK);
    const auto freed = allocateAlarm(m_handle);
    EXPECT_EQ(saNtfNotificationFree(freed.notificationHandle), SA_AIS_OK);
    const auto alive = allocateAlarm(m_handle);

    SaNtfAlarmNotificationT untouched{};
    for (const SaNtfHandleT handle : {SaNtfHandleT{0}, SaNtfHandleT{12345678}, finalized,
                                      SaNtfHandleT{alive.notificationHandle}}) {
        EXPECT_EQ(saNtfAlarmNotificationAllocate(handle, &untouched, 0, 0, 0, 0, 0, 0, 0),
                  SA_AIS_ERR_BAD_HANDLE);
        EXPECT_EQ(untouched.notificationHandle, 0u);
        EXPECT_EQ(saNtfFinalize(handle), SA_AIS_ERR_BAD_HANDLE);
    }
    void* data = nullptr;
    SaNtfValueT value{};
    value.ptrVal.dataSize = 1;
    SaUint16T size = 0;
    for (const SaNtfNotificationHandleT handle :
         {SaNtfNotificationHandleT{0}, SaNtfNotificationHandleT{12345678}, lost.notificationHandle,
          freed.notificationHandle, SaNtfNotificationHandleT{m_handle}}) {
        EXPECT_EQ(saNtfPtrValAllocate(handle, 1, &data, &value), SA_AIS_ERR_BAD_HANDLE);
        EXPECT_EQ(saNtfPtrValGet(handle, &value, &data, &size), SA_AIS_ERR_BAD_HANDLE);
        EXPECT_EQ(saNtfNotificationSend(handle), SA_AIS_ERR_BAD_HANDLE);
        EXPECT_EQ(saNtfNotificationFree(handle), SA_AIS_ERR_BAD_HANDLE);
    }
    EXPECT_EQ(saNtfNotificationSend(alive.notificationHandle), SA_AIS_OK);
}

// --- the memory of a notification ---

TEST_F(Ntf, InitialisesAllMemory) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 2, 65535, 65535, 3, 4, 5, -1),
              SA_AIS_OK);
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    const auto isZero = [](const auto* field, std::size_t count) {
        const auto* bytes = reinterpret_cast<const char*>(field);
        const std::size_t size = count * sizeof *field;
        return std::string(bytes, size) == std::string(size, '\0');
    };
    EXPECT_TRUE(isZero(header.eventType, 1));
    EXPECT_TRUE(isZero(header.notificationObject, 1));
    EXPECT_TRUE(isZero(header.notifyingObject, 1));
    EXPECT_TRUE(isZero(header.notificationClassId, 1));
    EXPECT_TRUE(isZero(header.notificationId, 1));
    EXPECT_TRUE(isZero(header.correlatedNotifications, header.numCorrelatedNotifications));
    EXPECT_TRUE(isZero(header.additionalText, header.lengthAdditionalText));
    EXPECT_TRUE(isZero(header.additionalInfo, header.numAdditionalInfo));
    EXPECT_TRUE(isZero(alarm.probableCause, 1));
    EXPECT_TRUE(isZero(alarm.specificProblems, alarm.numSpecificProblems));
    EXPECT_TRUE(isZero(alarm.perceivedSeverity, 1));
    EXPECT_TRUE(isZero(alarm.thresholdInformation, 1));
    EXPECT_TRUE(isZero(alarm.monitoredAttributes, alarm.numMonitoredAttributes));
    EXPECT_TRUE(isZero(alarm.proposedRepairActions, alarm.numProposedRepairActions));
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

TEST_F(Ntf, FindsEachValueAgain) {
    const auto alarm = allocateAlarm(m_handle);
    SaNtfValueT values[3] = {};
    const std::string texts[] = {"first", "", "the third"};
    for (int i = 0; i < 3; ++i) {
        setString(alarm, values[i], texts[i]);
    }
    void* data = nullptr;
    SaUint16T size = 0;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(saNtfPtrValGet(alarm.notificationHandle, &values[i], &data, &size), SA_AIS_OK);
        EXPECT_EQ(size, texts[i].size() + 1);
        EXPECT_STREQ(static_cast<const char*>(data), texts[i].c_str());
    }
    data = nullptr;
    SaNtfValueT unknown = values[0];
    ++unknown.ptrVal.dataOffset;
    SaNtfValueT tooLong = values[2];
    ++tooLong.ptrVal.dataSize;
    const SaNtfNotificationHandleT handle = alarm.notificationHandle;
    EXPECT_EQ(saNtfPtrValGet(handle, &unknown, &data, &size), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValGet(handle, &tooLong, &data, &size), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValGet(handle, nullptr, &data, &size), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValAllocate(handle, 0, &data, &unknown), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValAllocate(handle, 1, nullptr, &unknown), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValAllocate(handle, 1, &data, nullptr), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(data, nullptr);
}

// --- what Send checks ---

struct SendRow {
    const char* name;
    std::function<void(SaNtfAlarmNotificationT&)> change;
    SaAisErrorT result;
};
using Alarm = SaNtfAlarmNotificationT;
const SendRow kSendRows[] = {
    {"Plain", [](Alarm&) {}, SA_AIS_OK},
    {"ObjectEmpty", [](Alarm& a) { a.notificationHeader.notificationObject->length = 0; },
     SA_AIS_OK},
    {"Object599", [](Alarm& a) { a.notificationHeader.notificationObject->length = 599; },
     SA_AIS_OK},
    {"Object600", [](Alarm& a) { a.notificationHeader.notificationObject->length = 600; },
     SA_AIS_ERR_INVALID_PARAM},
    {"Notifying65535", [](Alarm& a) { a.notificationHeader.notifyingObject->length = 65535; },
     SA_AIS_ERR_INVALID_PARAM},
    {"TextTooShort", [](Alarm& a) { a.notificationHeader.additionalText[3] = '\0'; },
     SA_AIS_ERR_INVALID_PARAM},
    {"TextWithoutEnd", [](Alarm& a) { a.notificationHeader.additionalText[4] = '!'; },
     SA_AIS_ERR_INVALID_PARAM},
    {"EventType3fff", [](Alarm& a) { setCode(*a.notificationHeader.eventType, 0x3fff); },
     SA_AIS_ERR_INVALID_PARAM},
    {"EventType4005", [](Alarm& a) { setCode(*a.notificationHeader.eventType, 0x4005); },
     SA_AIS_OK},
    {"EventType4006", [](Alarm& a) { setCode(*a.notificationHeader.eventType, 0x4006); },
     SA_AIS_ERR_INVALID_PARAM},
    {"Cause0", [](Alarm& a) { setCode(*a.probableCause, 0); }, SA_AIS_OK},
    {"Cause75", [](Alarm& a) { setCode(*a.probableCause, 75); }, SA_AIS_ERR_INVALID_PARAM},
    {"Severity0", [](Alarm& a) { setCode(*a.perceivedSeverity, 0); }, SA_AIS_OK},
    {"Severity6", [](Alarm& a) { setCode(*a.perceivedSeverity, 6); }, SA_AIS_ERR_INVALID_PARAM},
    {"SeverityMax", [](Alarm& a) { setCode(*a.perceivedSeverity, 0xffffffff); },
     SA_AIS_ERR_INVALID_PARAM},
    {"Trend2", [](Alarm& a) { setCode(*a.trend, 2); }, SA_AIS_OK},
    {"Trend3", [](Alarm& a) { setCode(*a.trend, 3); }, SA_AIS_ERR_INVALID_PARAM},
    {"InfoType14", [](Alarm& a) { setCode(a.notificationHeader.additionalInfo[1].infoType, 14); },
     SA_AIS_OK},
    {"InfoType15", [](Alarm& a) { setCode(a.notificationHeader.additionalInfo[1].infoType, 15); },
     SA_AIS_ERR_INVALID_PARAM},
    {"ActionType15", [](Alarm& a) { setCode(a.proposedRepairActions[0].actionValueType, 15); },
     SA_AIS_ERR_INVALID_PARAM}};

class NtfSend : public Ntf, public testing::WithParamInterface<SendRow> {};

TEST_P(NtfSend, ChecksTheFields) {
    auto alarm = allocateAlarm(m_handle);
    GetParam().change(alarm);
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), GetParam().result);
    EXPECT_EQ(logLines().size(), GetParam().result == SA_AIS_OK ? 1u : 0u);
}
INSTANTIATE_TEST_SUITE_P(, NtfSend, testing::ValuesIn(kSendRows),
                         [](const auto& row) { return std::string(row.param.name); });

// --- the notification log ---

TEST_F(Ntf, LogsTheWholeNotification) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, 10, 6, 0, 0, 1, -1), SA_AIS_OK);
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
    const SaNtfValueTypeT types[] = {SA_NTF_VALUE_STRING, SA_NTF_VALUE_INT8,
                                     SA_NTF_VALUE_UINT64, SA_NTF_VALUE_DOUBLE,
                                     SA_NTF_VALUE_BINARY, SA_NTF_VALUE_LDAP_NAME};
    for (int i = 0; i < 6; ++i) {
        info[i].infoType = types[i];
    }
    setString(alarm, info[0].infoValue, "CI=1");
    info[1].infoValue.int8Val = -8;
    info[2].infoValue.uint64Val = ~SaUint64T{0};
    info[3].infoValue.doubleVal = 0.5;
    info[4].infoId = 7;
    setString(alarm, info[4].infoValue, "\xFF");
    setString(alarm, info[5].infoValue, std::string("\x03\0a=1...", 8));

    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    ASSERT_EQ(logLines().size(), 1u);
    const std::string expected =
        R"({"notificationId":")" + std::to_string(*header.notificationId) +
        R"(","eventTime":"1969-12-31T23:59:59.999999Z","eventTimeNs":-1,"notificationType":"alarm",)"
        R"("eventType":"equipment","eventTypeCode":16388,)"
        R"("notificationObject":"board=3","notifyingObject":"shelf=1",)"
        R"("classId":{"vendorId":32473,"majorId":193,"minorId":65535},)"
        R"("perceivedSeverity":"major","perceivedSeverityCode":4,"probableCause":74,"trend":1,)"
        R"("thresholdId":255,"additionalText":"\"a\"\n)"
        "\xC3\xA9"
        R"( %s","additionalInfo":[{"infoId":0,"infoType":11,"value":"CI=1"},)"
        R"({"infoId":0,"infoType":1,"value":-8},)"
        R"({"infoId":0,"infoType":7,"value":18446744073709551615},)"
        R"({"infoId":0,"infoType":9,"value":0.5},)"
        R"({"infoId":7,"infoType":13,"value":")"
        "\xEF\xBF\xBD"
        R"(\u0000","valueHex":"ff00"},{"infoId":0,"infoType":10,"value":"a=1"}],)"
        R"("proposedRepairActions":[{"actionId":0,"actionValueType":11,"value":null}],)"
        R"("processId":)" +
        std::to_string(::getpid()) + R"(,"threadId":)" + std::to_string(::gettid()) + "}";
    EXPECT_EQ(logLines()[0], expected);
}

TEST_F(Ntf, LogsANumberInTheSizeAndSignOfItsType) {
    const std::pair<SaNtfValueTypeT, const char*> rows[] = {
        {SA_NTF_VALUE_UINT8, "200"},
        {SA_NTF_VALUE_INT8, "-56"},
        {SA_NTF_VALUE_UINT16, "51400"},
        {SA_NTF_VALUE_INT16, "-14136"},
        {SA_NTF_VALUE_UINT32, "3368601800"},
        {SA_NTF_VALUE_INT32, "-926365496"},
        {SA_NTF_VALUE_UINT64, "14468034567615334600"},
        {SA_NTF_VALUE_INT64, "-3978709506094217016"},
        {SA_NTF_VALUE_FLOAT, "-411206.25"},
        {SA_NTF_VALUE_DOUBLE, "-4.3180364477547035e+42"}};
    const auto alarm = allocateAlarm(m_handle);
    SaNtfAdditionalInfoT& info = alarm.notificationHeader.additionalInfo[0];
    std::memset(&info.infoValue, 200, sizeof info.infoValue);
    for (const auto& [type, number] : rows) {
        info.infoType = type;
        ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
        EXPECT_NE(logLines().back().find(std::string(R"("value":)") + number), std::string::npos)
            << logLines().back();
    }
}

TEST_F(Ntf, GivesEachSendingItsOwnIdAndTime) {
    const auto alarm = allocateAlarm(m_handle);
    std::vector<SaNtfIdentifierT> ids;
    const auto before = static_cast<std::int64_t>(std::time(nullptr)) * SA_TIME_ONE_SECOND;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
        ids.push_back(*alarm.notificationHeader.notificationId);
        const ParsedLine line = parseLine(logLines().back());
        EXPECT_EQ(line.record.notificationId, ids.back());
        EXPECT_GE(line.record.eventTimeNs, before);
        EXPECT_EQ(line.record.notifyingObject, "managedElement=1,board=3");
    }
    EXPECT_LT(ids[0], ids[1]);
}

TEST_F(Ntf, KeepsBytesThatAreNoText) {
    const auto alarm = allocateAlarm(m_handle);
    const std::string bytes = "\xFF\xC3(\x80";
    setName(*alarm.notificationHeader.notificationObject, bytes);
    std::strcpy(alarm.notificationHeader.additionalText, bytes.c_str());
    alarm.notificationHeader.additionalInfo[1].infoType = SA_NTF_VALUE_STRING;
    setString(alarm, alarm.notificationHeader.additionalInfo[1].infoValue, bytes);
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const ParsedLine line = parseLine(logLines().at(0));
    ASSERT_EQ(line.kind, ParsedLine::Kind::Notification) << line.reason;
    EXPECT_EQ(line.record.notificationObject, bytes);
    EXPECT_EQ(line.record.additionalText, bytes);
    EXPECT_EQ(std::get<std::string>(line.record.additionalInfo.at(1).value), bytes);
}

TEST_F(Ntf, SharesTheLogAmongProcessesAndThreads) {
    constexpr int kProcesses = 4;
    constexpr int kThreads = 4;
    constexpr int kAlarms = 100;
    const auto forked = allocateAlarm(m_handle); // every child inherits its handle and open file
    EXPECT_EQ(saNtfNotificationSend(forked.notificationHandle), SA_AIS_OK);
    for (int process = 0; process < kProcesses; ++process) {
        if (::fork() != 0) {
            continue;
        }
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([this] {
                for (int i = 0; i < kAlarms; ++i) {
                    const auto alarm = allocateAlarm(m_handle);
                    saNtfNotificationSend(alarm.notificationHandle);
                    saNtfNotificationFree(alarm.notificationHandle);
                }
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
        ::_exit(HasFailure() ? 1 : 0);
    }
    for (int process = 0; process < kProcesses; ++process) {
        int status = -1;
        ::wait(&status);
        EXPECT_EQ(status, 0);
    }
    std::set<std::uint64_t> ids;
    for (const std::string& line : logLines()) {
        const ParsedLine parsed = parseLine(line);
        ASSERT_EQ(parsed.kind, ParsedLine::Kind::Notification) << line;
        EXPECT_TRUE(ids.insert(parsed.record.notificationId).second);
    }
    EXPECT_EQ(ids.size(), 1u + kProcesses * kThreads * kAlarms);
}

TEST_F(Ntf, ReportsANotificationThatCannotBeLogged) {
    const std::pair<const char*, SaAisErrorT> rows[] = {{"/dev/full", SA_AIS_ERR_NO_RESOURCES},
                                                        {"/dev", SA_AIS_ERR_LIBRARY},
                                                        {"/dev/null/log", SA_AIS_ERR_LIBRARY},
                                                        {"/dev/null", SA_AIS_OK}};
    for (const auto& [path, result] : rows) {
        const Environment environment(Environment::Values{{"RUXA_NTF_LOG", path}});
        const SaNtfHandleT handle = initialize();
        EXPECT_EQ(saNtfNotificationSend(allocateAlarm(handle).notificationHandle), result) << path;
        EXPECT_EQ(saNtfFinalize(handle), SA_AIS_OK);
    }
    EXPECT_EQ(saNtfNotificationSend(allocateAlarm(m_handle).notificationHandle), SA_AIS_OK);
}

TEST_F(Ntf, BlanksOutATornLineAndWritesAWholeOneBehindIt) {
    const auto alarm = allocateAlarm(m_handle);
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const auto wholeSize = fs::file_size(m_log);

    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {wholeSize + 20, wholeSize + 20};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const bool shortWrite =
            saNtfNotificationSend(alarm.notificationHandle) == SA_AIS_ERR_NO_RESOURCES;
        const bool noWrite =
            saNtfNotificationSend(alarm.notificationHandle) == SA_AIS_ERR_NO_RESOURCES;
        ::_exit(shortWrite && noWrite ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(fs::file_size(m_log), wholeSize + 20);

    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    std::ofstream(m_log, std::ios::app) << "what is not ours stays";
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    std::vector<ParsedLine::Kind> kinds;
    for (const std::string& line : logLines()) {
        kinds.push_back(parseLine(line).kind);
    }
    using Kind = ParsedLine::Kind;
    EXPECT_EQ(kinds, (std::vector{Kind::Notification, Kind::Blank, Kind::Notification, Kind::Torn,
                                  Kind::Notification}));
    EXPECT_EQ(logLines().at(3).find("what is not ours stays{"), 0u);

    fs::resize_file(m_log, fs::file_size(m_log) - 1); // an editor's doing: only the newline is gone
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    kinds.clear();
    for (const std::string& line : logLines()) {
        kinds.push_back(parseLine(line).kind);
    }
    EXPECT_EQ(kinds, (std::vector{Kind::Notification, Kind::Blank, Kind::Notification, Kind::Torn,
                                  Kind::Notification, Kind::Blank, Kind::Notification}));
    EXPECT_EQ(parseLine(logLines().back()).record.notificationId,
              *alarm.notificationHeader.notificationId);
}

TEST_F(Ntf, BeginsALogAnewThatWasMovedAway) {
    const auto alarm = allocateAlarm(m_handle);
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    fs::rename(m_log, m_folder / "log.1");
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    EXPECT_EQ(logLines().size(), 1u);
    fs::rename(m_log, m_folder / "log.2");
    std::ofstream(m_log) << "begun by another\n";
    EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    EXPECT_EQ(logLines().size(), 2u);
}

TEST_F(Ntf, TakesTheLogsPathFromTheEnvironment) {
    const std::string folder = m_folder / "state";
    const struct {
        std::string log, stateHome, home;
        fs::path path;
    } rows[] = {
        {"/a/log", "/state", "/home/me", "/a/log"},
        {"log", "", "", fs::current_path() / "log"},
        {"", "/state", "/home/me", "/state/ruxa/notifications.jsonl"},
        {"", "relative", "/home/me", "/home/me/.local/state/ruxa/notifications.jsonl"},
        {"", "", "", fs::current_path() / "notifications.jsonl"},
        {"", folder, "", folder + "/ruxa/notifications.jsonl"},
    };
    for (const auto& row : rows) {
        const Environment environment(Environment::Values{
            {"RUXA_NTF_LOG", row.log}, {"XDG_STATE_HOME", row.stateHome}, {"HOME", row.home}});
        EXPECT_EQ(platform::ntf::notificationLogPath(), row.path);
    }
    platform::ntf::NotificationLog log(rows[5].path);
    EXPECT_EQ(log.append("line\n"), 0);
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::file_size(rows[5].path), 5u);
}

TEST(NtfLogLine, TellsTornAndForeignLinesFromNotifications) {
    const std::string whole = platform::ntf::toLine({});
    const auto with = [whole](const std::string& from, const char* to) {
        return std::string(whole).replace(whole.find(from), from.size(), to);
    };
    using Kind = ParsedLine::Kind;
    const std::pair<std::string, Kind> rows[] = {
        {whole, Kind::Notification},
        {whole.substr(0, whole.size() - 1), Kind::Notification},
        {"", Kind::Blank},
        {"   \n", Kind::Blank},
        {whole.substr(0, whole.size() - 2), Kind::Torn},
        {whole.substr(0, 20) + whole, Kind::Torn},
        {whole.substr(20), Kind::Torn},
        {std::string(100000, '['), Kind::Torn},
        {"7", Kind::Foreign},
        {"{}", Kind::Foreign},
        {"[]", Kind::Foreign},
        {with("\"alarm\"", "\"stateChange\""), Kind::Foreign},
        {with("\"majorId\":0", "\"majorId\":65536"), Kind::Foreign},
        {with("\"minorId\":0", "\"minorId\":-1"), Kind::Foreign},
        {with("\"trend\":0", "\"trend\":\"up\""), Kind::Foreign},
        {with("\"notificationId\":\"0\"", "\"notificationId\":\"x\""), Kind::Foreign},
        {with("\"additionalInfo\":[]", "\"additionalInfo\":[7]"), Kind::Foreign},
        {with("\"additionalText\"", "\"additionalTextHex\":\"zz\",\"additionalText\""),
         Kind::Foreign}};
    for (const auto& [line, kind] : rows) {
        const ParsedLine parsed = parseLine(line);
        EXPECT_EQ(parsed.kind, kind) << line << parsed.reason;
        EXPECT_EQ(parsed.reason.empty(), kind == Kind::Notification) << line;
    }
}

} // namespace
