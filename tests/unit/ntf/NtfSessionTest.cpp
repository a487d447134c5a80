#include <algorithm>
#include <deque>
#include <new>
#include <stdexcept>
#include <utility>

#include "LibraryTest.h"

namespace {

using NtfSessionTest = LibraryTest;

/// The calls of one alarm with a program group and correlation info as its only entry.
const Texts kAlarmCalls{"allocate 0 5 1 0 0 1 -1", "value 8", "value 55", "send", "free"};

void raiseWithGroup(FaultManagementI& adapter) {
    adapter.raisePrimaryAlarm("Top=1,Unit=7", 7, "", "text", {}, 0, std::string("uuid"), "system",
                              "compute", 3U);
}

struct Busy {
    const char* call;
    std::size_t position; // of the first such call in `kAlarmCalls`
};

constexpr std::size_t kBusyAnswers = 500;

class BusyTest : public LibraryTest, public testing::WithParamInterface<Busy> {};

TEST_P(BusyTest, RepeatsTheSameCallEveryTenthOfASecondWithoutATrace) {
    const auto client = adapter();
    platform().results[GetParam().call].assign(kBusyAnswers, SA_AIS_ERR_TRY_AGAIN);
    raiseWithGroup(*client);
    Texts expected = kAlarmCalls;
    const std::string repeated = kAlarmCalls[GetParam().position];
    for (std::size_t i = 0; i < kBusyAnswers; ++i) {
        expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(GetParam().position),
                        {repeated, "usleep 100000"});
    }
    EXPECT_EQ(platform().calls(), expected);
    EXPECT_EQ(platform().sent.size(), 1U);
    EXPECT_EQ(platform().traces(0), Texts{});
}

INSTANTIATE_TEST_SUITE_P(Calls, BusyTest,
                         testing::Values(Busy{"allocate", 0}, Busy{"value", 1}, Busy{"send", 3},
                                         Busy{"free", 4}),
                         [](const auto& row) { return row.param.call; });

TEST_F(NtfSessionTest, OpeningAndClosingAreRepeatedToo) {
    platform().results["initialize"].assign(2, SA_AIS_ERR_TRY_AGAIN);
    platform().results["finalize"] = {SA_AIS_ERR_TRY_AGAIN, SA_AIS_ERR_TIMEOUT};
    v1::getFmiFactory();
    platform().events.clear();
    delete v1::getFmiFactory()->createFaultManagement();
    Texts calls = platform().calls();
    calls.erase(std::remove_if(
                    calls.begin(), calls.end(),
                    [](const auto& call) { return call.find("TraceObject") != std::string::npos; }),
                calls.end());
    EXPECT_EQ(calls, (Texts{"initialize A 1 1 null", "usleep 100000", "initialize A 1 1 null",
                            "usleep 100000", "initialize A 1 1 null", "finalize", "usleep 100000",
                            "finalize"}));
    EXPECT_EQ(platform().traces(0), Texts{"dolqNtfSessionImpl|Finalize Session: errorCode:5"});
}

struct Failure {
    const char* name;
    std::string call;
    std::deque<SaAisErrorT> results;
    Texts events; // from the failing call on, without flow and detail traces
    std::size_t sent;
};

class FailureTest : public LibraryTest, public testing::WithParamInterface<Failure> {};

TEST_P(FailureTest, FreesTheNotificationThenTracesTheCode) {
    const auto client = adapter();
    platform().enabledGroups = {0};
    platform().results[GetParam().call] = GetParam().results;
    raiseWithGroup(*client);
    EXPECT_EQ(platform().events, GetParam().events);
    EXPECT_EQ(platform().sent.size(), GetParam().sent);
    platform().sent.clear();
    raiseWithGroup(*client); // nothing of it reaches the next alarm
    EXPECT_EQ(sentAlarm().repairActions, Texts{"0 nrPgGrp"});
}

INSTANTIATE_TEST_SUITE_P(Calls, FailureTest,
                         testing::ValuesIn(std::vector<Failure>{
                             {"Allocate",
                              "allocate",
                              {SA_AIS_ERR_TRY_AGAIN, SA_AIS_ERR_NO_RESOURCES},
                              {kAlarmCalls[0], "usleep 100000", kAlarmCalls[0],
                               "0 dolqNtfSessionImpl|Allocate Alarm:  errorCode:12"},
                              0},
                             {"Value",
                              "value",
                              {SA_AIS_OK, SA_AIS_ERR_NO_SPACE},
                              {kAlarmCalls[0], kAlarmCalls[1], kAlarmCalls[2], "free",
                               "0 dolqNtfSessionImpl|Populate Alarm:  errorCode:f"},
                              0},
                             {"ProgramGroupValueAlone",
                              "value",
                              {SA_AIS_ERR_NO_SPACE},
                              {kAlarmCalls[0], kAlarmCalls[1], kAlarmCalls[2], "send", "free"},
                              1},
                             {"Send",
                              "send",
                              {SA_AIS_ERR_TOO_BIG},
                              {kAlarmCalls[0], kAlarmCalls[1], kAlarmCalls[2], "send", "free",
                               "0 dolqNtfSessionImpl|Send Alarm:  errorCode:1a"},
                              0},
                             {"Free",
                              "free",
                              {SA_AIS_ERR_BAD_HANDLE},
                              {kAlarmCalls[0], kAlarmCalls[1], kAlarmCalls[2], "send", "free",
                               "0 dolqNtfSessionImpl|Free Alarm:  errorCode:9"},
                              1},
                         }),
                         [](const auto& row) { return row.param.name; });

TEST_F(NtfSessionTest, ARefusedSessionDropsEveryAlarmAndSaysSo) {
    platform().results["initialize"] = {SA_AIS_ERR_VERSION};
    auto client = adapter({{7, "Unit", 1}});
    client->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(platform().traces(4).back(), "dolqNtfSessionImpl|m_ntfHandle: !m_ntfHandle:0");
    EXPECT_EQ(platform().calls(), Texts{});
    platform().events.clear();
    client.reset();
    EXPECT_EQ(platform().events,
              (Texts{"deregisterTraceObject prefix.DolqTraceLU", "getDefaultTraceObject",
                     "0 dolqNtfSessionImpl|Finalize Session: errorCode:9",
                     "deregisterTraceObject prefix.DolqTraceLU", "getDefaultTraceObject"}));
}

TEST_F(NtfSessionTest, ARefusedSessionIsTracedThroughItsOwnTraceObject) {
    v1::getFmiFactory();
    platform().events.clear();
    platform().results["initialize"] = {SA_AIS_ERR_LIBRARY};
    delete v1::getFmiFactory()->createFaultManagement();
    ASSERT_GE(platform().events.size(), 4U);
    platform().events.resize(4);
    EXPECT_EQ(
        platform().events,
        (Texts{"getDefaultTraceObject", "registerTraceObject prefix.DolqTraceLU",
               "initialize A 1 1 null", "0 dolqNtfSessionImpl|Initialize Session: errorCode:2"}));
}

TEST_F(NtfSessionTest, AnExceptionOnTheWayStillFreesTheNotification) {
    const auto client = adapter();
    for (const char* const call : {"send", "free"}) {
        platform().onCall[call] = [thrown = false]() mutable {
            if (!std::exchange(thrown, true)) {
                throw std::bad_alloc();
            }
        };
        EXPECT_THROW(raiseWithGroup(*client), std::bad_alloc) << call;
        EXPECT_EQ(platform().openNotifications, 0) << call;
    }
    platform().sent.clear();
    raiseWithGroup(*client);
    EXPECT_EQ(platform().sent.size(), 1U);
}

TEST_F(NtfSessionTest, ABackendThatCannotTraceAFailedClosingStopsNothing) {
    auto client = adapter();
    platform().results["finalize"] = {SA_AIS_ERR_LIBRARY};
    platform().onCall["formatStr"] = [] { throw std::runtime_error("no trace"); };
    client.reset();
    EXPECT_TRUE(platform().sessions.empty());
}

constexpr std::size_t kLongest = 65534;

struct Cut {
    const char* name;
    std::string given;
    std::size_t sent;
};

class CutTest : public LibraryTest, public testing::WithParamInterface<Cut> {};

TEST_P(CutTest, ATextIsSentAsFarAsItGoesAndTheCutIsTraced) {
    const auto client = adapter();
    const std::string& given = GetParam().given;
    raise(*client, kObject, given, {given});
    EXPECT_EQ(sentAlarm().additionalText, given.substr(0, GetParam().sent));
    EXPECT_EQ(sentAlarm().additionalInfo.back(), given.substr(0, GetParam().sent));
    const std::string lengths =
        ", length:" + std::to_string(given.size()) + ", sent:" + std::to_string(GetParam().sent);
    EXPECT_EQ(platform().traces(0),
              given.size() == GetParam().sent
                  ? Texts{}
                  : (Texts{"dolqNtfSessionImpl|Alarm field cut: field:additionalText" + lengths,
                           "dolqNtfSessionImpl|Alarm field cut: field:additionalInfo, entry:1" +
                               lengths}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CutTest,
    testing::ValuesIn(std::vector<Cut>{
        {"Longest", std::string(kLongest, 'x'), kLongest},
        {"OneMore", std::string(kLongest + 1, 'x'), kLongest},
        {"SixteenBitsAround", std::string(65536 + 7, 'x'), kLongest},
        {"WholeCharacter", std::string(kLongest - 3, 'x') + "\xE2\x82\xAC" + "x", kLongest},
        {"SplitInThree", std::string(kLongest - 2, 'x') + "\xE2\x82\xAC", kLongest - 2},
        {"SplitInFour", std::string(kLongest - 3, 'x') + "\xF0\x9F\x9A\xA8", kLongest - 3},
        {"NotUtf8", std::string(kLongest + 9, '\x80'), kLongest},
    }),
    [](const auto& row) { return row.param.name; });

TEST_F(NtfSessionTest, ANotificationObjectIsSentUpTo599Bytes) {
    const auto client = adapter();
    const std::string tail = ",Unit=7";
    const std::string longest = std::string(599 - tail.size(), 'x') + tail;
    client->ceaseAlarm(longest, 7, "");
    EXPECT_EQ(platform().sent.back().object, longest);
    EXPECT_EQ(platform().sent.back().notifyingObject, longest);
    EXPECT_EQ(platform().traces(0), Texts{});
    client->ceaseAlarm('y' + longest, 7, "");
    EXPECT_EQ(platform().sent.back().object, ('y' + longest).substr(0, 599));
    EXPECT_EQ(
        platform().traces(0),
        Texts{
            "dolqNtfSessionImpl|Alarm field cut: field:notificationObject, length:600, sent:599"});
}

TEST_F(NtfSessionTest, AListIsSentUpTo65535Entries) {
    const auto client = adapter();
    platform().enabledGroups = {0};
    for (const std::size_t given : {65534, 65535, 65536 + 5}) { // the correlation info comes on top
        platform().sent.clear();
        platform().events.clear();
        raise(*client, kObject, "", Texts(given, "i"));
        EXPECT_EQ(sentAlarm().additionalInfo.size(), 65535U) << given;
        EXPECT_EQ(platform().traces(0),
                  given == 65534
                      ? Texts{}
                      : Texts{"dolqNtfSessionImpl|Alarm field cut: field:additionalInfo, length:" +
                              std::to_string(given + 1) + ", sent:65535"});
    }
}

} // namespace
