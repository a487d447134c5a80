#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "saNtf.h"
#include "support/SetUserId.h"

namespace {

/// What a new process with the schedule gets for its calls, each made six times: `<call> <results>`
/// on stderr.
[[noreturn]] void callUnder(const char* schedule, bool hasOthersRights) {
    runsWithOthersRights = hasOthersRights;
    ::setenv("RUXA_NTF_FAULTS", schedule, 1);
    ::setenv("RUXA_NTF_LOG", "/dev/null", 1);
    std::string results;
    const auto call = [&](const char* name, auto function) {
        results += name;
        for (int i = 0; i < 6; ++i) {
            results += ' ' + std::to_string(function());
        }
        results += "; ";
    };
    SaNtfHandleT handle = 0;
    SaVersionT version = {'A', 1, 1};
    SaNtfAlarmNotificationT alarm{};
    void* data = nullptr;
    SaNtfValueT value{};
    call("initialize", [&] { return saNtfInitialize(&handle, nullptr, &version); });
    if (handle == 0) {
        std::fputs(results.c_str(), stderr);
        std::exit(0);
    }
    call("allocate",
         [&] { return saNtfAlarmNotificationAllocate(handle, &alarm, 0, 0, 0, 0, 0, 0, -1); });
    *alarm.notificationHeader.eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
    call("value", [&] { return saNtfPtrValAllocate(alarm.notificationHandle, 1, &data, &value); });
    const auto before = std::chrono::steady_clock::now();
    call("send", [&] { return saNtfNotificationSend(alarm.notificationHandle); });
    const auto taken = std::chrono::steady_clock::now() - before;
    SaNtfAlarmNotificationFilterT filter{};
    SaNtfReadHandleT reading = 0;
    SaNtfNotificationsT read{};
    saNtfAlarmNotificationFilterAllocate(handle, &filter, 0, 0, 0, 0, 0, 0, 0);
    const SaNtfNotificationTypeFilterHandlesT filters{0, 0, 0, filter.notificationFilterHandle, 0};
    const SaNtfSearchCriteriaT criteria{SA_NTF_SEARCH_ONLY_FILTER, 0, 0};
    call("search", [&] { return saNtfNotificationReadInitialize(criteria, &filters, &reading); });
    call("read", [&] { return saNtfNotificationReadNext(reading, SA_NTF_SEARCH_YOUNGER, &read); });
    call("free", [&] { return saNtfNotificationFree(alarm.notificationHandle); });
    call("finalize", [&] { return saNtfFinalize(handle); });
    results += taken >= std::chrono::milliseconds(40) ? "delayed" : "at once";
    std::fputs(results.c_str(), stderr);
    std::exit(0); // counts coverage, too
}

const struct {
    const char* schedule;
    const char* output; // a pattern
    bool hasOthersRights = false;
} kSchedules[] = {
    {"send:TRY_AGAIN,times=2",
     "^ruxa-ntf: RUXA_NTF_FAULTS refuses send with 6 \\(SA_AIS_ERR_TRY_AGAIN\\)\n"
     "initialize 1 1 1 1 1 1; .*send 6 6 1 1 1 1; .*free 1 9"},
    {"send:SA_AIS_ERR_NO_RESOURCES,after=3,times=1", "send 1 1 1 18 1 1; .*at once"},
    {" send : LIBRARY , after=1 , times = 2 ;send:TIMEOUT,after=2;;", "send 1 2 2 5 5 5;"},
    {"initialize:INIT,times=1;allocate:NO_MEMORY,times=2;value:DEPLOYMENT,times=3;"
     "free:BUSY,times=1;finalize:EXIST,times=1;search:TRY_AGAIN,times=1;read:TIMEOUT,after=2,times=1",
     "initialize 4 1 1 1 1 1; allocate 8 8 1 1 1 1; value 40 40 40 1 1 1; send 1 1 1 1 1 1; "
     "search 6 1 1 1 1 1; read 12 12 5 12 12 12; free 10 1 9 9 9 9; finalize 14 1 9 9 9 9;"},
    {"send:OK,delay=20,after=1,times=2", "^initialize .*send 1 1 1 1 1 1; .*delayed"},
    {"send:BUSY;sendd:TRY_AGAIN",
     "^RUXA_NTF_FAULTS: 'sendd' in 'sendd:TRY_AGAIN' is no call: .*; no faults are made\n.*"
     "send 1 1 1 1 1 1"},
    {"send:AGAIN", "^RUXA_NTF_FAULTS: 'AGAIN' in 'send:AGAIN' is no result"},
    {"send,times=1", "^RUXA_NTF_FAULTS: 'send' in 'send,times=1' is no CALL:RESULT"},
    {"send:BUSY,times=-1", "^RUXA_NTF_FAULTS: '-1' in .* is no number"},
    {"send:BUSY,after=1000000001", "^RUXA_NTF_FAULTS: '1000000001' in .* is no number"},
    {"send:BUSY,time=1", "^RUXA_NTF_FAULTS: 'time=1' in .* is none of times=N"},
    {"\x1B[31m:BUSY", R"(^RUXA_NTF_FAULTS: '\\x1B\[31m' in )"},
    {"", "^initialize 1 1 1 1 1 1; .*at once"},
    // Who starts a program with another user's rights chooses neither its faults nor its log.
    {"initialize:BUSY",
     "^ruxa-ntf: no alarm can be sent: set RUXA_NTF_LOG.*\ninitialize 2 2 2 2 2 2; $", true},
};

TEST(NtfFaultsDeathTest, AreAsScheduled) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the schedule is read once in a process
    for (const auto& row : kSchedules) {
        EXPECT_EXIT(callUnder(row.schedule, row.hasOthersRights), testing::ExitedWithCode(0),
                    row.output);
    }
}

} // namespace
