#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pthread.h>
#include <unistd.h>

#include "NtfClient.h"
#include "saNtf.h"
#include "support/FailingMalloc.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

class NtfRead : public Ntf {
protected:
    void send(const std::string& object, const std::string& text = "text") const {
        const auto alarm = allocateAlarm(m_handle, object, text).notificationHandle;
        EXPECT_EQ(saNtfNotificationSend(alarm), SA_AIS_OK);
        EXPECT_EQ(saNtfNotificationFree(alarm), SA_AIS_OK);
    }

    static SaAisErrorT allocateFilter(SaNtfHandleT handle, SaNtfAlarmNotificationFilterT* filter,
                                      SaUint16T objects) {
        return saNtfAlarmNotificationFilterAllocate(handle, filter, 0, objects, 0, 0, 0, 0, 0);
    }

    static SaAisErrorT begin(SaNtfNotificationFilterHandleT filter, SaNtfReadHandleT& reading,
                             std::uint32_t mode = SA_NTF_SEARCH_ONLY_FILTER) {
        SaNtfSearchCriteriaT criteria{};
        setCode(criteria.searchMode, mode);
        const SaNtfNotificationTypeFilterHandlesT filters{0, 0, 0, filter, 0};
        return saNtfNotificationReadInitialize(criteria, &filters, &reading);
    }

    SaNtfReadHandleT readingOf(const Texts& objects = {}) const {
        SaNtfAlarmNotificationFilterT filter{};
        EXPECT_EQ(allocateFilter(m_handle, &filter, static_cast<SaUint16T>(objects.size())),
                  SA_AIS_OK);
        for (std::size_t i = 0; i < objects.size(); ++i) {
            setName(filter.notificationFilterHeader.notificationObjects[i], objects[i]);
        }
        SaNtfReadHandleT reading = 0;
        EXPECT_EQ(begin(filter.notificationFilterHandle, reading), SA_AIS_OK);
        EXPECT_EQ(saNtfNotificationFilterFree(filter.notificationFilterHandle), SA_AIS_OK);
        return reading;
    }

    static SaAisErrorT next(SaNtfReadHandleT reading, SaNtfNotificationsT& notification) {
        return saNtfNotificationReadNext(reading, SA_NTF_SEARCH_YOUNGER, &notification);
    }

    static std::string objectOf(const SaNtfNotificationsT& read) {
        const SaNameT& name =
            *read.notification.alarmNotification.notificationHeader.notificationObject;
        return {reinterpret_cast<const char*>(name.value), name.length};
    }

    /// The objects of the next alarms, and why there are no more, if not for the end.
    static Texts rest(SaNtfReadHandleT reading) {
        Texts objects;
        SaNtfNotificationsT read{};
        SaAisErrorT result = SA_AIS_OK;
        while ((result = next(reading, read)) == SA_AIS_OK) {
            objects.push_back(objectOf(read));
            EXPECT_EQ(saNtfNotificationFree(read.notification.alarmNotification.notificationHandle),
                      SA_AIS_OK);
        }
        if (result != SA_AIS_ERR_NOT_EXIST) {
            objects.push_back(std::to_string(result));
        }
        return objects;
    }
};

TEST_F(NtfRead, AndTheLogHoldTheWholeNotification) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 2, 8, 3, 0, 0, 1, -1), SA_AIS_OK);
    SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    *header.eventType = SA_NTF_ALARM_EQUIPMENT;
    setName(*header.notificationObject, "\"\\\x7F\xC2\x9B\xE2\x80\xAE\xE2\x80\xA8\x1B");
    setName(*header.notifyingObject, std::string("\xFF\xC3(\x80\xED\xA0\x80\0hidden", 14));
    *header.notificationClassId = {4294967295, 193, 65535};
    *header.eventTime = -1;
    header.correlatedNotifications[0] = 1;
    header.correlatedNotifications[1] = 18446744073709551615u;
    std::strcpy(header.additionalText, "\"%s\"\n\xC3\xA9");
    header.additionalInfo[0] = {7, SA_NTF_VALUE_STRING, {}};
    setString(alarm, header.additionalInfo[0].infoValue, "CI=1");
    header.additionalInfo[1] = {65535, SA_NTF_VALUE_BINARY, {}};
    setString(alarm, header.additionalInfo[1].infoValue, "bytes");
    header.additionalInfo[2] = {1, SA_NTF_VALUE_STRING, {}};
    setString(alarm, header.additionalInfo[2].infoValue, "");
    alarm.proposedRepairActions[0] = {3, SA_NTF_VALUE_STRING, {}};
    setString(alarm, alarm.proposedRepairActions[0].actionValue, "nrPgGrp");
    *alarm.perceivedSeverity = SA_NTF_SEVERITY_MAJOR;
    setCode(*alarm.probableCause, 73);
    *alarm.trend = SA_NTF_TREND_LESS_SEVERE;
    alarm.thresholdInformation->thresholdId = 255;
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const std::string wrong = "\xEF\xBF\xBD"; // U+FFFD
    const std::string expected =
        R"(,"eventTime":"1969-12-31T23:59:59.999999Z","eventTimeNs":-1,"notificationType":"alarm",)"
        R"("eventType":"equipment","eventTypeCode":16388,)"
        R"("notificationObject":"\"\\\u007f\u009b\u202e\u2028\u001b","notifyingObject":")" +
        wrong + wrong + "(" + wrong + wrong + wrong + wrong +
        R"(","classId":{"vendorId":4294967295,"majorId":193,"minorId":65535},)"
        R"("perceivedSeverity":"major","perceivedSeverityCode":4,"probableCause":73,"trend":2,)"
        R"("thresholdId":255,"correlatedNotifications":["1","18446744073709551615"],)"
        R"("additionalText":"\"%s\"\n)"
        "\xC3\xA9"
        R"(",)"
        R"("additionalInfo":[{"infoId":7,"infoType":11,"value":"CI=1"},)"
        R"({"infoId":65535,"infoType":13,"value":null},{"infoId":1,"infoType":11,"value":""}],)"
        R"("proposedRepairActions":[{"actionId":3,"actionValueType":11,"value":"nrPgGrp"}],)"
        R"("processId":)" +
        std::to_string(::getpid()) + R"(,"threadId":)" + std::to_string(::gettid()) + "}";
    const auto expectLast = [&](SaNtfIdentifierT id) {
        EXPECT_EQ(logLines().back(),
                  R"({"notificationId":")" + std::to_string(id) + '"' + expected);
    };
    expectLast(*header.notificationId);

    const SaNtfReadHandleT reading = readingOf();
    SaNtfNotificationsT read{};
    ASSERT_EQ(next(reading, read), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationReadFinalize(reading), SA_AIS_OK);
    EXPECT_EQ(read.notificationType, SA_NTF_TYPE_ALARM);
    const SaNtfAlarmNotificationT& got = read.notification.alarmNotification;
    EXPECT_EQ(*got.notificationHeader.notificationId, *header.notificationId);
    EXPECT_EQ(got.notificationHeader.lengthAdditionalText, 8);
    EXPECT_EQ(got.specificProblems, nullptr);
    EXPECT_EQ(got.monitoredAttributes, nullptr);
    ASSERT_EQ(saNtfNotificationSend(got.notificationHandle), SA_AIS_OK); // makes the same line
    EXPECT_GT(*got.notificationHeader.notificationId, *header.notificationId);
    expectLast(*got.notificationHeader.notificationId);

    // The service knows the time, and who notifies.
    *header.eventTime = SA_TIME_UNKNOWN;
    header.notifyingObject->length = 0;
    const auto before = static_cast<std::int64_t>(std::time(nullptr)) * 1'000'000'000;
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const auto again = nlohmann::json::parse(logLines().back());
    EXPECT_GE(again.at("eventTimeNs"), before);
    EXPECT_EQ(again.at("notifyingObject"), again.at("notificationObject"));

    // No further value, and those there are only by their own places.
    void* data = nullptr;
    SaUint16T size = 0;
    SaNtfAdditionalInfoT* const info = got.notificationHeader.additionalInfo;
    SaNtfValueT copy = info[0].infoValue;
    const SaNtfNotificationHandleT handle = got.notificationHandle;
    EXPECT_EQ(saNtfPtrValAllocate(handle, 1, &data, &copy), SA_AIS_ERR_NO_SPACE);
    const SaNtfValueT* const first = &info[0].infoValue;
    for (const SaNtfValueT* value : {&copy, &info[1].infoValue}) { // no place, no value
        EXPECT_EQ(saNtfPtrValGet(handle, value, &data, &size), SA_AIS_ERR_INVALID_PARAM);
    }
    EXPECT_EQ(saNtfPtrValGet(handle, nullptr, &data, &size), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValGet(handle, first, nullptr, &size), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfPtrValGet(handle, first, &data, nullptr), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_TRUE(data == nullptr && size == 0);
    const auto textOf = [&](const SaNtfValueT& value) {
        EXPECT_EQ(saNtfPtrValGet(handle, &value, &data, &size), SA_AIS_OK);
        return std::string(static_cast<const char*>(data), size);
    };
    EXPECT_EQ(textOf(info[0].infoValue), std::string("CI=1", 5));
    EXPECT_EQ(textOf(info[2].infoValue), std::string("", 1));
    EXPECT_EQ(textOf(got.proposedRepairActions[0].actionValue), std::string("nrPgGrp", 8));
}

TEST_F(NtfRead, GivesThoseInWhoseObjectOneOfTheNamesOccurs) {
    const std::string first = "managedElement=1,board=7";
    const std::string second = "managedElement=1,board=70\xC3\xA9\"\x1B";
    const std::string third = "\xFF";
    for (const std::string& object : {first, second, third}) {
        send(object, "board=8 in the text");
    }
    const struct {
        Texts names;
        Texts objects;
    } rows[] = {
        {{}, {first, second, "\xEF\xBF\xBD"}},
        {{first}, {first, second}},
        {{"Element"}, {first, second}},
        {{"board=70"}, {second}},
        {{"\xC3\xA9\"\x1B"}, {second}},
        {{third}, {"\xEF\xBF\xBD"}},
        {{"boarD"}, {}},
        {{"board=8", "board=70"}, {second}},
        {{""}, {first, second, "\xEF\xBF\xBD"}},
        {{std::string(599, 'x')}, {}},
    };
    for (const auto& row : rows) {
        const SaNtfReadHandleT reading = readingOf(row.names);
        EXPECT_EQ(rest(reading), row.objects) << "row " << &row - rows;
        EXPECT_EQ(rest(reading), Texts{}) << "the end stays the end";
    }
}

TEST_F(NtfRead, IsOfTheLogAsItWas) {
    EXPECT_EQ(rest(readingOf()), Texts{}); // there is none
    send("first");
    std::string line = logLines().front();
    std::ofstream(m_log) << line.append(65536 - line.size(), ' ') << '\n'; // behind a piece
    line.erase(line.find_last_not_of(' ') + 1);
    std::ofstream(m_log, std::ios::app)
        << "not ours\n\n"
        << line.substr(0, line.size() - 1) << '\n'
        << line.replace(line.find("Code\":5"), 7, "Code\":6") << '\n';
    send("second", std::string(65534, '\x1B')); // a line of several pieces
    send("third");
    fs::resize_file(m_log, fs::file_size(m_log) - 1); // what lacks its newline only is whole
    const SaNtfReadHandleT reading = readingOf();
    const SaNtfReadHandleT shortened = readingOf();
    SaNtfNotificationsT read{};
    ASSERT_EQ(next(shortened, read), SA_AIS_OK);
    send("fourth");
    EXPECT_EQ(rest(reading), (Texts{"first", "second", "third"}));
    EXPECT_EQ(rest(readingOf()), (Texts{"first", "second", "third", "fourth"}));

    const SaNtfReadHandleT renamed = readingOf();
    fs::rename(m_log, m_folder / "log.1");
    testing::internal::CaptureStderr();
    EXPECT_EQ(rest(renamed), Texts{"2"});
    std::ofstream(m_log) << std::string(1 << 20, ' ');
    EXPECT_EQ(rest(renamed), Texts{"2"});
    fs::rename(m_folder / "log.1", m_log);
    fs::resize_file(m_log, 1000);
    EXPECT_EQ(rest(shortened), Texts{"2"});
    fs::resize_file(m_log, 0);
    EXPECT_EQ(rest(readingOf()), Texts{});

    SaNtfAlarmNotificationFilterT filter{};
    SaNtfReadHandleT none = 77;
    ASSERT_EQ(allocateFilter(m_handle, &filter, 0), SA_AIS_OK);
    fs::remove(m_log);
    fs::create_directory(m_log);
    EXPECT_EQ(begin(filter.notificationFilterHandle, none), SA_AIS_ERR_LIBRARY);
    fs::remove(m_log);
    fs::create_symlink(m_log, m_log);
    EXPECT_EQ(begin(filter.notificationFilterHandle, none), SA_AIS_ERR_LIBRARY);
    EXPECT_EQ(none, 77u);
    std::string expected;
    for (const char* cause : {"No such file or directory", "it was renamed or cut meanwhile",
                              "it is no regular file", "Too many levels of symbolic links"}) {
        expected +=
            "ruxa-ntf: the alarms in '" + m_log.string() + "' cannot be read: " + cause + '\n';
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST_F(NtfRead, TakesALineForAWholeNotificationOrNone) {
    const auto alarm = allocateAlarm(m_handle); // trend 1
    alarm.notificationHeader.additionalInfo[0].infoId = 1;
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const std::string whole = logLines().at(0);
    const auto with = [whole](const std::string& from, const char* to) {
        return std::string(whole).replace(whole.find(from), from.size(), to);
    };
    const auto expectEach = [this](std::size_t alarms, const Texts& lines) {
        for (const std::string& line : lines) {
            std::ofstream(m_log) << line << '\n';
            EXPECT_EQ(rest(readingOf()).size(), alarms) << line;
        }
    };
    // two writers at the same time, one of which was killed; an early version's line; white space
    expectEach(1, {whole.substr(0, 20) + whole, "not ours" + whole,
                   with("\"correlatedNotifications\":[],", ""), whole + " \r"});
    const std::string text = "\"additionalText\":\"";
    expectEach(0,
               {"", "   ", "7", "{}", "[]", std::string(100000, '['), whole + "{}",
                whole + whole.substr(0, 20), whole.substr(20), whole.substr(0, whole.size() - 1)});
    expectEach(
        0, {with(text, "\"additionalText\":\"\xC0\x80"), with(text, "\"additionalText\":\"\x1B"),
            with(text + "text\"", "\"additionalText\":7"), with("\"alarm\"", "\"stateChange\""),
            with("\"majorId\":0", "\"majorId\":65536"), with("\"minorId\":0", "\"minorId\":-1"),
            with("\"vendorId\":0", "\"vendorId\":true"), with("\"trend\":1", "\"trend\":\"up\""),
            with("\"trend\":1", "\"trend\":1e300"), with("\"trend\":1", "\"trend\":3"),
            with("Id\":\"", "Id\":\"x"), with("[],\"additionalText", "[7],\"additionalText"),
            with("\"infoId\":1", "\"id\":1")});
}

TEST_F(NtfRead, CutsTextsThatGrewInTheLog) {
    send(std::string(599, '\xFF'), std::string(65534, '\xFF'));
    SaNtfNotificationsT read{};
    ASSERT_EQ(next(readingOf(), read), SA_AIS_OK);
    EXPECT_EQ(objectOf(read).size(), 599u);
    EXPECT_EQ(read.notification.alarmNotification.notificationHeader.lengthAdditionalText, 65535);
}

TEST_F(NtfRead, ChecksItsArguments) {
    send("object", "");
    SaNtfAlarmNotificationFilterT filter;
    std::memset(&filter, 0xA5, sizeof filter);
    EXPECT_EQ(allocateFilter(m_handle, nullptr, 0), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(allocateFilter(0, &filter, 0), SA_AIS_ERR_BAD_HANDLE);
    for (int i = 0; i < 6; ++i) {
        SaUint16T unused[6] = {};
        unused[i] = 1;
        EXPECT_EQ(saNtfAlarmNotificationFilterAllocate(m_handle, &filter, unused[0], 0, unused[1],
                                                       unused[2], unused[3], unused[4], unused[5]),
                  SA_AIS_ERR_NOT_SUPPORTED);
    }
    ASSERT_EQ(allocateFilter(m_handle, &filter, 65535), SA_AIS_OK);
    const auto filterHandle = filter.notificationFilterHandle;
    EXPECT_TRUE(filter.numProbableCauses == 0 && filter.probableCauses == nullptr);
    EXPECT_EQ(filter.notificationFilterHeader.numNotificationObjects, 65535);

    SaNtfReadHandleT reading = 0;
    EXPECT_EQ(begin(filterHandle, reading), SA_AIS_OK);
    EXPECT_EQ(begin(filterHandle, reading, SA_NTF_SEARCH_ONLY_FILTER + 1),
              SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(begin(filterHandle, reading, SA_NTF_SEARCH_ONLY_FILTER - 1),
              SA_AIS_ERR_NOT_SUPPORTED);
    filter.notificationFilterHeader.notificationObjects[65534].length = 600;
    EXPECT_EQ(begin(filterHandle, reading), SA_AIS_ERR_INVALID_PARAM);
    const SaNtfSearchCriteriaT criteria{SA_NTF_SEARCH_ONLY_FILTER, 0, 0};
    using Filters = SaNtfNotificationTypeFilterHandlesT;
    const Filters none{};
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, nullptr, &reading),
              SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, &none, nullptr), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, &none, &reading), SA_AIS_ERR_NOT_SUPPORTED);
    const Filters two{0, 0, filterHandle, filterHandle, 0};
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, &two, &reading), SA_AIS_ERR_NOT_SUPPORTED);

    SaNtfNotificationsT read{};
    EXPECT_EQ(saNtfNotificationReadNext(reading, SA_NTF_SEARCH_OLDER, nullptr),
              SA_AIS_ERR_INVALID_PARAM);
    for (const std::uint32_t wrong : {0u, 3u}) {
        SaNtfSearchDirectionT direction{};
        setCode(direction, wrong);
        EXPECT_EQ(saNtfNotificationReadNext(reading, direction, &read), SA_AIS_ERR_INVALID_PARAM);
    }
    EXPECT_EQ(saNtfNotificationReadNext(reading, SA_NTF_SEARCH_OLDER, &read), SA_AIS_OK);
    const SaNtfNotificationHeaderT& header = read.notification.alarmNotification.notificationHeader;
    EXPECT_TRUE(header.additionalText == nullptr && header.lengthAdditionalText == 0);
    read = {};
    EXPECT_EQ(next(reading, read), SA_AIS_ERR_NOT_EXIST);
    EXPECT_TRUE(read.notificationType == 0 && header.additionalInfo == nullptr);
}

/// Handles of another kind, those that were given back, and those of a finalized session.
TEST_F(NtfRead, EveryCallRefusesHandlesThatAreNotItsOwn) {
    using Handle = SaUint64T;
    // Of a session, a notification, a filter and a reading.
    const auto openAll = [] {
        const SaNtfHandleT session = initialize();
        SaNtfAlarmNotificationFilterT filter{};
        EXPECT_EQ(allocateFilter(session, &filter, 0), SA_AIS_OK);
        SaNtfReadHandleT reading = 0;
        EXPECT_EQ(begin(filter.notificationFilterHandle, reading), SA_AIS_OK);
        return std::vector<Handle>{session, allocateAlarm(session).notificationHandle,
                                   filter.notificationFilterHandle, reading};
    };
    send("object");
    const auto open = openAll();
    const auto freed = openAll();
    const auto lost = openAll();
    EXPECT_EQ(saNtfFinalize(lost[0]), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationFree(freed[1]), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationFilterFree(freed[2]), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationReadFinalize(freed[3]), SA_AIS_OK);

    SaNtfAlarmNotificationT alarm{};
    SaNtfAlarmNotificationFilterT filter{};
    SaNtfNotificationsT read{};
    SaNtfReadHandleT reading = 0;
    SaNtfValueT value{};
    void* data = nullptr;
    SaUint16T size = 0;
    const struct {
        Handle own;
        std::function<SaAisErrorT(Handle)> refuses;
        SaAisErrorT result = SA_AIS_OK; // for its own
    } rows[] = {
        {open[0],
         [&](Handle handle) {
             return saNtfAlarmNotificationAllocate(handle, &alarm, 0, 0, 0, 0, 0, 0, 0);
         }},
        {open[0], [&](Handle handle) { return allocateFilter(handle, &filter, 0); }},
        {open[2], [&](Handle handle) { return begin(handle, reading); }},
        {open[3], [&](Handle handle) { return next(handle, read); }},
        {open[1], saNtfNotificationSend},
        {open[1], [&](Handle handle) { return saNtfPtrValAllocate(handle, 1, &data, &value); }},
        {open[1], [&](Handle handle) { return saNtfPtrValGet(handle, &value, &data, &size); },
         SA_AIS_ERR_INVALID_PARAM},
        {open[1], saNtfNotificationFree},
        {open[2], saNtfNotificationFilterFree},
        {open[3], saNtfNotificationReadFinalize},
        {open[0], saNtfFinalize},
    };
    std::vector<Handle> every{1u << 31, freed[1], freed[2], freed[3]};
    every.insert(every.end(), open.begin(), open.end());
    every.insert(every.end(), lost.begin(), lost.end());
    for (const auto& row : rows) {
        for (const Handle handle : every) {
            if (handle != row.own) {
                EXPECT_EQ(row.refuses(handle), SA_AIS_ERR_BAD_HANDLE)
                    << "row " << &row - rows << ", handle " << handle;
            }
        }
    }
    EXPECT_TRUE(alarm.notificationHandle == 0 && filter.notificationFilterHandle == 0 &&
                reading == 0 && data == nullptr && read.notificationType == 0);
    EXPECT_EQ(begin(SA_NTF_FILTER_HANDLE_NULL, reading), SA_AIS_ERR_NOT_SUPPORTED);
    for (const auto& row : rows) { // 0, and that all are still good
        EXPECT_TRUE(&row == &rows[2] || row.refuses(0) == SA_AIS_ERR_BAD_HANDLE) << &row - rows;
        EXPECT_EQ(row.refuses(row.own), row.result) << &row - rows;
    }
    EXPECT_EQ(saNtfFinalize(freed[0]), SA_AIS_OK);
}

TEST_F(NtfRead, AndSendingGoOnInAForkedProcessThatClosedItsDescriptors) {
    const std::string text(40000, 't');
    for (const char* object : {"first", "second", "third", "fourth"}) {
        send(object, text);
    }
    const SaNtfReadHandleT reading = readingOf();
    SaNtfNotificationsT first{};
    ASSERT_EQ(next(reading, first), SA_AIS_OK);
    const auto open = entriesIn("/proc/self/fd");
    const pid_t child = ::fork();
    if (child == 0) {
        ::close_range(STDERR_FILENO + 1, 255, 0); // as daemons do
        const bool isRead = rest(reading) == Texts{"second", "third", "fourth"};
        send("child's");
        const bool isNothingOpen = ::open("/dev/null", O_RDONLY) == STDERR_FILENO + 1;
        ::_exit(isRead && !HasFailure() && isNothingOpen ? 0 : 1);
    }
    EXPECT_EQ(statusOf(child), 0);
    EXPECT_EQ(rest(reading), (Texts{"second", "third", "fourth"}));
    EXPECT_EQ(saNtfNotificationReadFinalize(reading), SA_AIS_OK);
    EXPECT_EQ(objectOf(first), "first"); // its receiver's, until it is freed
    EXPECT_EQ(entriesIn("/proc/self/fd"), open);
}

TEST_F(NtfRead, AndSendingHaveACodeForOneFailedMallocAndLeaveNothing) {
    send("object", std::string(100, 't'));
    const auto sendAndRead = [] {
        SaNtfHandleT session = 0;
        SaVersionT version = {'A', 1, 1};
        SaAisErrorT result = saNtfInitialize(&session, nullptr, &version);
        const auto then = [&result](auto call) { result = result == SA_AIS_OK ? call() : result; };
        SaNtfAlarmNotificationT alarm{};
        then([&] { return saNtfAlarmNotificationAllocate(session, &alarm, 0, 0, 1, 0, 0, 0, -1); });
        void* data = nullptr;
        SaNtfValueT* value = nullptr;
        then([&] {
            value = &alarm.notificationHeader.additionalInfo[0].infoValue;
            return saNtfPtrValAllocate(alarm.notificationHandle, 100, &data, value);
        });
        SaUint16T size = 0;
        then([&] { return saNtfPtrValGet(alarm.notificationHandle, value, &data, &size); });
        then([&] {
            *alarm.notificationHeader.eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
            return saNtfNotificationSend(alarm.notificationHandle);
        });
        SaNtfAlarmNotificationFilterT filter{};
        then([&] { return allocateFilter(session, &filter, 1); });
        SaNtfReadHandleT reading = 0;
        then([&] { return begin(filter.notificationFilterHandle, reading); });
        then([&] { return saNtfNotificationFilterFree(filter.notificationFilterHandle); });
        SaNtfNotificationsT read{};
        then([&] { return next(reading, read); });
        then([&] { return saNtfNotificationReadFinalize(reading); });
        EXPECT_EQ(saNtfFinalize(session), session != 0 ? SA_AIS_OK : SA_AIS_ERR_BAD_HANDLE);
        return result;
    };
    EXPECT_EQ(sendAndRead(), SA_AIS_OK);
    const long before = liveBlocks();
    int position = 1;
    SaAisErrorT result = SA_AIS_OK;
    while (withFailingMalloc(position, [&] { result = sendAndRead(); })) {
        EXPECT_EQ(result, SA_AIS_ERR_NO_MEMORY) << position;
        EXPECT_EQ(liveBlocks(), before) << position;
        ++position;
    }
    EXPECT_GT(position, 30);
}

/// No call is a place where a thread may end.
TEST_F(NtfRead, AndSendingRunToTheEndInACancelledThread) {
    send("object");
    testing::internal::CaptureStderr();
    const pid_t child = ::fork();
    if (child == 0) {
        ::pthread_cancel(::pthread_self());
        send("cancelled");
        const SaNtfReadHandleT reading = readingOf();
        EXPECT_EQ(rest(reading), (Texts{"object", "cancelled"}));
        EXPECT_EQ(saNtfNotificationReadFinalize(reading), SA_AIS_OK);
        EXPECT_EQ(saNtfFinalize(m_handle), SA_AIS_OK);
        const ScopedEnvironment nowhere("RUXA_NTF_LOG", nullptr);
        const ScopedEnvironment home("HOME", nullptr);
        const ScopedEnvironment state("XDG_STATE_HOME", nullptr);
        SaVersionT version = {'A', 1, 1};
        EXPECT_EQ(saNtfInitialize(&m_handle, nullptr, &version), SA_AIS_ERR_LIBRARY); // says why
        ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        ::_exit(HasFailure() ? 1 : 42);
    }
    EXPECT_EQ(statusOf(child), W_EXITCODE(42, 0));
    testing::internal::GetCapturedStderr();
}

} // namespace
