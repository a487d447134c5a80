#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include "NtfClient.h"
#include "saNtf.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

class NtfRead : public Ntf {
protected:
    void send(const std::string& object, const std::string& text = "text") const {
        SaNtfAlarmNotificationT alarm{};
        const auto length = static_cast<SaUint16T>(text.size() + 1);
        ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 0, length, 0, 0, 0, 0, 0),
                  SA_AIS_OK);
        *alarm.notificationHeader.eventType = SA_NTF_ALARM_EQUIPMENT;
        setName(*alarm.notificationHeader.notificationObject, object);
        text.copy(alarm.notificationHeader.additionalText, text.size());
        EXPECT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
        EXPECT_EQ(saNtfNotificationFree(alarm.notificationHandle), SA_AIS_OK);
    }

    static SaAisErrorT allocateFilter(SaNtfHandleT handle, SaNtfAlarmNotificationFilterT* filter,
                                      SaUint16T objects) {
        return saNtfAlarmNotificationFilterAllocate(handle, filter, 0, objects, 0, 0, 0, 0, 0);
    }

    SaNtfNotificationFilterHandleT filterFor(const Texts& objects = {}) const {
        SaNtfAlarmNotificationFilterT filter{};
        EXPECT_EQ(allocateFilter(m_handle, &filter, static_cast<SaUint16T>(objects.size())),
                  SA_AIS_OK);
        for (std::size_t i = 0; i < objects.size(); ++i) {
            setName(filter.notificationFilterHeader.notificationObjects[i], objects[i]);
        }
        return filter.notificationFilterHandle;
    }

    static SaAisErrorT begin(SaNtfNotificationFilterHandleT filter, SaNtfReadHandleT& reading,
                             std::uint32_t mode = SA_NTF_SEARCH_ONLY_FILTER) {
        SaNtfSearchCriteriaT criteria{};
        setCode(criteria.searchMode, mode);
        const SaNtfNotificationTypeFilterHandlesT filters{0, 0, 0, filter, 0};
        return saNtfNotificationReadInitialize(criteria, &filters, &reading);
    }

    SaNtfReadHandleT readingOf(const Texts& objects = {}) const {
        SaNtfReadHandleT reading = 0;
        const auto filter = filterFor(objects);
        EXPECT_EQ(begin(filter, reading), SA_AIS_OK);
        EXPECT_EQ(saNtfNotificationFilterFree(filter), SA_AIS_OK);
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

/// Sent once more, what was read makes the same line, but for the id.
TEST_F(NtfRead, GivesEveryFieldThatTheLogHolds) {
    SaNtfAlarmNotificationT alarm{};
    ASSERT_EQ(saNtfAlarmNotificationAllocate(m_handle, &alarm, 2, 6, 3, 0, 0, 1, -1), SA_AIS_OK);
    SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    *header.eventType = SA_NTF_ALARM_ENVIRONMENT;
    setName(*header.notificationObject, std::string(599, 'o'));
    setName(*header.notifyingObject, "shelf=1");
    *header.notificationClassId = {4294967295, 193, 65535};
    *header.eventTime = 1709210096555709622;
    header.correlatedNotifications[0] = 1;
    header.correlatedNotifications[1] = 18446744073709551615u;
    std::strcpy(header.additionalText, "\"a\"\n\x9B");
    header.additionalInfo[0] = {7, SA_NTF_VALUE_STRING, {}};
    setString(alarm, header.additionalInfo[0].infoValue, "CI=1");
    header.additionalInfo[1] = {65535, SA_NTF_VALUE_DOUBLE, {}};
    header.additionalInfo[2] = {1, SA_NTF_VALUE_STRING, {}};
    setString(alarm, header.additionalInfo[2].infoValue, "");
    alarm.proposedRepairActions[0] = {3, SA_NTF_VALUE_STRING, {}};
    setString(alarm, alarm.proposedRepairActions[0].actionValue, "nrPgGrp");
    *alarm.perceivedSeverity = SA_NTF_SEVERITY_MAJOR;
    setCode(*alarm.probableCause, 73);
    *alarm.trend = SA_NTF_TREND_LESS_SEVERE;
    alarm.thresholdInformation->thresholdId = 255;
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);

    const SaNtfReadHandleT reading = readingOf();
    SaNtfNotificationsT read{};
    ASSERT_EQ(next(reading, read), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationReadFinalize(reading), SA_AIS_OK);
    EXPECT_EQ(read.notificationType, SA_NTF_TYPE_ALARM);
    const SaNtfAlarmNotificationT& got = read.notification.alarmNotification;
    EXPECT_EQ(*got.notificationHeader.notificationId, *header.notificationId);
    EXPECT_EQ(got.notificationHeader.lengthAdditionalText, 8); // U+FFFD has three bytes
    EXPECT_EQ(got.specificProblems, nullptr);
    EXPECT_EQ(got.monitoredAttributes, nullptr);
    ASSERT_EQ(saNtfNotificationSend(got.notificationHandle), SA_AIS_OK);
    EXPECT_GT(*got.notificationHeader.notificationId, *header.notificationId);
    const auto withoutId = [](const std::string& line) { return line.substr(line.find(',')); };
    EXPECT_EQ(withoutId(logLines().at(1)), withoutId(logLines().at(0)));

    // No further value, and those there are only by their own places.
    void* data = nullptr;
    SaUint16T size = 0;
    SaNtfAdditionalInfoT* const info = got.notificationHeader.additionalInfo;
    SaNtfValueT copy = info[0].infoValue;
    const SaNtfNotificationHandleT handle = got.notificationHandle;
    EXPECT_EQ(saNtfPtrValAllocate(handle, 1, &data, &copy), SA_AIS_ERR_NO_SPACE);
    const struct {
        SaNtfNotificationHandleT handle;
        const SaNtfValueT* value;
        void** data;
        SaUint16T* size;
        SaAisErrorT result;
    } rows[] = {{handle, &copy, &data, &size, SA_AIS_ERR_INVALID_PARAM},
                {handle, &info[1].infoValue, &data, &size, SA_AIS_ERR_INVALID_PARAM}, // no block
                {handle, nullptr, &data, &size, SA_AIS_ERR_INVALID_PARAM},
                {handle, &info[0].infoValue, nullptr, &size, SA_AIS_ERR_INVALID_PARAM},
                {handle, &info[0].infoValue, &data, nullptr, SA_AIS_ERR_INVALID_PARAM},
                {0, &info[0].infoValue, &data, &size, SA_AIS_ERR_BAD_HANDLE},
                {m_handle, &info[0].infoValue, &data, &size, SA_AIS_ERR_BAD_HANDLE}};
    for (const auto& row : rows) {
        EXPECT_EQ(saNtfPtrValGet(row.handle, row.value, row.data, row.size), row.result)
            << "row " << &row - rows;
    }
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
        {{"board=8"}, {}},
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
        << "\nnot ours\n"
        << line.substr(0, line.size() - 1) << '\n'
        << line.replace(line.find("Code\":0"), 7, "Code\":6") << '\n';
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
    const std::string begin = "ruxa-ntf: the alarms in '" + m_log.string() + "' cannot be read: ";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              begin + "No such file or directory\n" + begin + "it was renamed or cut meanwhile\n");
    fs::resize_file(m_log, 0);
    EXPECT_EQ(rest(readingOf()), Texts{});
}

TEST_F(NtfRead, TakesALineForAWholeNotificationOrNone) {
    const auto alarm = allocateAlarm(m_handle); // trend 1
    alarm.notificationHeader.additionalInfo[0].infoId = 1;
    ASSERT_EQ(saNtfNotificationSend(alarm.notificationHandle), SA_AIS_OK);
    const std::string whole = logLines().at(0);
    const auto with = [whole](const std::string& from, const char* to) {
        return std::string(whole).replace(whole.find(from), from.size(), to);
    };
    const struct {
        std::size_t read; // of each line
        Texts lines;
    } rows[] = {
        {1,
         {whole,
          // two writers at the same time, one of which was killed
          whole.substr(0, 20) + whole, "not ours" + whole,
          with("\"correlatedNotifications\":[],", ""), whole + " \r"}},
        {0,
         {"",
          "   ",
          "7",
          "{}",
          "[]",
          std::string(100000, '['),
          whole.substr(0, whole.size() - 1),
          whole.substr(20),
          whole + whole.substr(0, 20),
          whole + "{}",
          with("\"additionalText\":\"", "\"additionalText\":\"\xC0\x80"),
          with("\"additionalText\":\"", "\"additionalText\":\"\x1B"),
          with("\"alarm\"", "\"stateChange\""),
          with("\"majorId\":0", "\"majorId\":65536"),
          with("\"minorId\":0", "\"minorId\":-1"),
          with("\"vendorId\":0", "\"vendorId\":true"),
          with("\"trend\":1", "\"trend\":\"up\""),
          with("\"trend\":1", "\"trend\":1e300"),
          with("\"trend\":1", "\"trend\":3"),
          with("Id\":\"", "Id\":\"x"),
          with("\"additionalText\":\"text\"", "\"additionalText\":7"),
          with("[],\"additionalText", "[7],\"additionalText"),
          with("\"infoId\":1", "\"id\":1")}},
    };
    for (const auto& row : rows) {
        for (const std::string& line : row.lines) {
            std::ofstream(m_log) << line << '\n';
            EXPECT_EQ(rest(readingOf()).size(), row.read) << line;
        }
    }
}

TEST_F(NtfRead, CutsTextsThatGrewInTheLog) {
    send(std::string(599, '\xFF'), std::string(65534, '\xFF'));
    SaNtfNotificationsT read{};
    ASSERT_EQ(next(readingOf(), read), SA_AIS_OK);
    const SaNtfNotificationHeaderT& header = read.notification.alarmNotification.notificationHeader;
    EXPECT_EQ(objectOf(read).size(), 599u);
    EXPECT_EQ(header.lengthAdditionalText, 65535);
    EXPECT_EQ(std::strlen(header.additionalText), 65534u);

    std::string line = logLines().at(0); // and one that the service never wrote
    std::string elements = R"({"infoId":1,"infoType":0,"value":null})";
    for (int doubled = 0; doubled < 17; ++doubled) {
        elements += ',' + elements;
    }
    std::ofstream(m_log) << line.replace(line.find("Info\":[") + 7, 0, elements);
    ASSERT_EQ(next(readingOf(), read), SA_AIS_OK);
    EXPECT_EQ(header.numAdditionalInfo, 65535);
    EXPECT_EQ(header.additionalInfo[65534].infoId, 1);
}

TEST_F(NtfRead, RefusesALogThatIsNone) {
    SaNtfReadHandleT reading = 77;
    for (const fs::path& path : {fs::path("/dev/full"), m_folder / "file/log"}) {
        std::ofstream(m_folder / "file") << "";
        const ScopedEnvironment log("RUXA_NTF_LOG", path.c_str());
        const SaNtfHandleT handle = initialize();
        SaNtfAlarmNotificationFilterT filter{};
        ASSERT_EQ(allocateFilter(handle, &filter, 0), SA_AIS_OK);
        EXPECT_EQ(begin(filter.notificationFilterHandle, reading), SA_AIS_ERR_LIBRARY) << path;
        EXPECT_EQ(saNtfFinalize(handle), SA_AIS_OK);
    }
    EXPECT_EQ(reading, 77u);
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
    EXPECT_EQ(std::string(reinterpret_cast<char*>(&filter.numProbableCauses), 6),
              std::string(6, '\0'));
    EXPECT_EQ(filter.probableCauses, nullptr);
    EXPECT_EQ(filter.notificationFilterHeader.eventTypes, nullptr);
    EXPECT_EQ(filter.notificationFilterHeader.numNotificationObjects, 65535);

    SaNtfReadHandleT reading = 0;
    for (const std::uint32_t mode : {0u, 8u, 0xffffffffu}) {
        EXPECT_EQ(begin(filterHandle, reading, mode), SA_AIS_ERR_INVALID_PARAM);
    }
    for (std::uint32_t mode = 1; mode <= 6; ++mode) {
        EXPECT_EQ(begin(filterHandle, reading, mode), SA_AIS_ERR_NOT_SUPPORTED);
    }
    filter.notificationFilterHeader.notificationObjects[65534].length = 600;
    EXPECT_EQ(begin(filterHandle, reading), SA_AIS_ERR_INVALID_PARAM);
    filter.notificationFilterHeader.notificationObjects[65534].length = 0;
    const SaNtfSearchCriteriaT criteria{SA_NTF_SEARCH_ONLY_FILTER, 0, 0};
    using Filters = SaNtfNotificationTypeFilterHandlesT;
    const Filters none{};
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, nullptr, &reading),
              SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, &none, nullptr), SA_AIS_ERR_INVALID_PARAM);
    EXPECT_EQ(saNtfNotificationReadInitialize(criteria, &none, &reading), SA_AIS_ERR_NOT_SUPPORTED);
    for (const auto other :
         {&Filters::objectCreateDeleteFilterHandle, &Filters::attributeChangeFilterHandle,
          &Filters::stateChangeFilterHandle, &Filters::securityAlarmFilterHandle}) {
        Filters filters{0, 0, 0, filterHandle, 0};
        filters.*other = filterHandle;
        EXPECT_EQ(saNtfNotificationReadInitialize(criteria, &filters, &reading),
                  SA_AIS_ERR_NOT_SUPPORTED);
    }
    ASSERT_EQ(begin(filterHandle, reading), SA_AIS_OK);

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
    SaNtfNotificationsT untouched;
    std::memset(&untouched, 0xA5, sizeof untouched);
    const std::string before(reinterpret_cast<char*>(&untouched), sizeof untouched);
    EXPECT_EQ(next(reading, untouched), SA_AIS_ERR_NOT_EXIST);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(&untouched), sizeof untouched), before);
}

/// Handles of another kind, those that were given back, and those of a finalized session.
TEST_F(NtfRead, EveryCallRefusesHandlesThatAreNotItsOwn) {
    using Handle = SaUint64T;
    struct Handles {
        Handle session = initialize();
        Handle notification = allocateAlarm(session).notificationHandle;
        Handle filter = 0;
        Handle reading = 0;
    };
    const auto openAll = [] {
        Handles all;
        SaNtfAlarmNotificationFilterT filter{};
        EXPECT_EQ(allocateFilter(all.session, &filter, 0), SA_AIS_OK);
        all.filter = filter.notificationFilterHandle;
        EXPECT_EQ(begin(all.filter, all.reading), SA_AIS_OK);
        return all;
    };
    send("object");
    const Handles open = openAll();
    const Handles freed = openAll();
    const Handles lost = openAll();
    EXPECT_EQ(saNtfFinalize(lost.session), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationFree(freed.notification), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationFilterFree(freed.filter), SA_AIS_OK);
    EXPECT_EQ(saNtfNotificationReadFinalize(freed.reading), SA_AIS_OK);
    EXPECT_EQ(saNtfFinalize(freed.session), SA_AIS_OK);

    SaNtfAlarmNotificationT alarm{};
    SaNtfAlarmNotificationFilterT filter{};
    SaNtfNotificationsT read{};
    SaNtfReadHandleT reading = 0;
    SaNtfValueT value{};
    void* data = nullptr;
    SaUint16T size = 0;
    const struct {
        const char* call;
        Handle own;
        std::function<SaAisErrorT(Handle)> refuses;
    } rows[] = {
        {"allocate", open.session,
         [&](Handle handle) {
             return saNtfAlarmNotificationAllocate(handle, &alarm, 0, 0, 0, 0, 0, 0, 0);
         }},
        {"filter", open.session, [&](Handle handle) { return allocateFilter(handle, &filter, 0); }},
        {"search", open.filter, [&](Handle handle) { return begin(handle, reading); }},
        {"read", open.reading, [&](Handle handle) { return next(handle, read); }},
        {"send", open.notification, saNtfNotificationSend},
        {"value", open.notification,
         [&](Handle handle) { return saNtfPtrValAllocate(handle, 1, &data, &value); }},
        {"text", open.notification,
         [&](Handle handle) { return saNtfPtrValGet(handle, &value, &data, &size); }},
        {"free", open.notification, saNtfNotificationFree},
        {"free filter", open.filter, saNtfNotificationFilterFree},
        {"finalize reading", open.reading, saNtfNotificationReadFinalize},
        {"finalize", open.session, saNtfFinalize},
    };
    const Handle every[] = {1u << 31,          open.session, open.notification, open.filter,
                            open.reading,      freed.filter, freed.session,     freed.reading,
                            lost.notification, lost.filter,  lost.session,      lost.reading,
                            freed.notification};
    for (const auto& row : rows) {
        for (const Handle handle : every) {
            if (handle != row.own) {
                EXPECT_EQ(row.refuses(handle), SA_AIS_ERR_BAD_HANDLE) << row.call << handle;
            }
        }
    }
    EXPECT_TRUE(alarm.notificationHandle == 0 && filter.notificationFilterHandle == 0 &&
                reading == 0 && data == nullptr && read.notificationType == 0);
    EXPECT_EQ(begin(SA_NTF_FILTER_HANDLE_NULL, reading), SA_AIS_ERR_NOT_SUPPORTED);
    for (const auto& row : rows) { // 0, and that all are still good
        EXPECT_TRUE(row.call == std::string("search") || row.refuses(0) == SA_AIS_ERR_BAD_HANDLE)
            << row.call;
        EXPECT_EQ(row.refuses(row.own),
                  row.call == std::string("text") ? SA_AIS_ERR_INVALID_PARAM : SA_AIS_OK)
            << row.call;
    }
}

TEST_F(NtfRead, GoesOnInAForkedProcessThatClosedItsDescriptors) {
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
        ::close_range(STDERR_FILENO + 1, 255, 0);
        ::_exit(rest(reading) == Texts{"second", "third", "fourth"} ? 0 : 1);
    }
    EXPECT_EQ(statusOf(child), 0);
    EXPECT_EQ(rest(reading), (Texts{"second", "third", "fourth"}));
    EXPECT_EQ(saNtfNotificationReadFinalize(reading), SA_AIS_OK);
    EXPECT_EQ(objectOf(first), "first"); // its receiver's, until it is freed
    EXPECT_EQ(first.notification.alarmNotification.notificationHeader.additionalText, text);
    EXPECT_EQ(entriesIn("/proc/self/fd"), open);
}

/// No call is a place where a thread may end.
TEST_F(NtfRead, AndSendingRunToTheEndInACancelledThread) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the runtime loses track of a cancelled thread's stack";
#endif
    send("object");
    const ScopedEnvironment nowhere("RUXA_NTF_LOG", nullptr);
    const ScopedEnvironment home("HOME", nullptr);
    const ScopedEnvironment state("XDG_STATE_HOME", nullptr);
    Texts objects;
    std::vector<SaAisErrorT> results;
    std::function<void()> work = [&] {
        pthread_cancel(pthread_self());
        SaVersionT version = {'A', 1, 1};
        SaNtfHandleT handle = 0;
        results.push_back(saNtfInitialize(&handle, nullptr, &version)); // and says why not
        send("cancelled");
        const SaNtfReadHandleT reading = readingOf();
        objects = rest(reading);
        results.push_back(saNtfNotificationReadFinalize(reading));
        results.push_back(saNtfFinalize(m_handle));
    };
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        pthread_testcancel();
        return nullptr;
    };
    pthread_t thread{};
    void* result = nullptr;
    testing::internal::CaptureStderr();
    ASSERT_EQ(pthread_create(&thread, nullptr, run, &work), 0);
    pthread_join(thread, &result);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_EQ(objects, (Texts{"object", "cancelled"}));
    EXPECT_EQ(results, (std::vector<SaAisErrorT>{SA_AIS_ERR_LIBRARY, SA_AIS_OK, SA_AIS_OK}));
    const ScopedEnvironment log("RUXA_NTF_LOG", m_log.c_str());
    m_handle = initialize();
}

} // namespace
