#include <algorithm>
#include <deque>

#include "LibraryTest.h"
#include "ntf/dolqNtfSessionImpl.h"

namespace {

using NtfSessionTest = LibraryTest;

struct Answer {
    const char* name;
    Texts info;
    std::string call;
    std::deque<SaAisErrorT> results; // once the service is no longer busy
    Texts events;                    // as if it had not been, without flow and detail traces
    std::size_t sent;
};

const Texts kTwo{"first", "2"};
const std::string kAllocate = "allocate 0 5 2 0 0 1 -1";
const std::string kGroup = "value 8";
const std::string kUnit = "0 dolqNtfSessionImpl|";

const Answer kAnswers[] = {
    {"Allocate",
     kTwo,
     "allocate",
     {SA_AIS_ERR_NO_RESOURCES},
     {kAllocate, kUnit + "Allocate Alarm:  errorCode:12"},
     0},
    {"FirstValue",
     kTwo,
     "value",
     {SA_AIS_OK, SA_AIS_ERR_NO_SPACE},
     {kAllocate, kGroup, "value 6", "free", kUnit + "Populate Alarm:  errorCode:f"},
     0},
    {"ProgramGroup",
     kTwo,
     "value",
     {SA_AIS_ERR_NO_SPACE},
     {kAllocate, kGroup, "value 6", "value 2", "send", "free"},
     1},
    {"ProgramGroupAlone",
     {},
     "value",
     {SA_AIS_ERR_NO_SPACE},
     {"allocate 0 5 0 0 0 1 -1", kGroup, "free", kUnit + "Populate Alarm:  errorCode:f"},
     0},
    {"Send",
     {},
     "send",
     {SA_AIS_ERR_TOO_BIG},
     {"allocate 0 5 0 0 0 1 -1", kGroup, "send", "free", kUnit + "Send Alarm:  errorCode:1a"},
     0},
    {"Free",
     {},
     "free",
     {SA_AIS_ERR_BAD_HANDLE},
     {"allocate 0 5 0 0 0 1 -1", kGroup, "send", "free", kUnit + "Free Alarm:  errorCode:9"},
     1},
};

TEST_F(NtfSessionTest, AnAnswerIsAwaitedBeforeTheNotificationIsFreedAndAFailureTraced) {
    for (const auto& row : kAnswers) {
        SCOPED_TRACE(row.name);
        constexpr int kBusyAnswers = 500;
        const dolq::NotificationData alarm("Unit=7", 0, "text", row.info, 1, 2, "nrPgGrp");
        const std::shared_ptr<dolq::NtfSessionI> session = dolq::openSession();
        platform().events.clear();
        platform().sent.clear();
        platform().enabledGroups = {0};
        platform().results[row.call] = row.results;
        Texts expected = row.events;
        const auto first =
            std::find_if(expected.begin(), expected.end(),
                         [&](const auto& event) { return event.rfind(row.call, 0) == 0; }) -
            expected.begin();
        const Texts again{*(expected.begin() + first), "usleep 100000"};
        for (int i = 0; i < kBusyAnswers; ++i) {
            platform().results[row.call].push_front(SA_AIS_ERR_TRY_AGAIN);
            expected.insert(expected.begin() + first, again.begin(), again.end());
        }
        session->sendNotification(alarm);
        EXPECT_EQ(platform().events, expected);
        EXPECT_EQ(platform().sent.size(), row.sent);
        platform().sent.clear();
        session->sendNotification(alarm); // nothing of it reaches the next alarm
        EXPECT_EQ(sentAlarm().repairActions, Texts{"0 nrPgGrp"});
    }
}

TEST_F(NtfSessionTest, ARefusedSessionDropsEveryAlarmAndSaysSo) {
    v1::getFmiFactory()->getConfiguration()->setMapping(7, 1, "Unit");
    platform().events.clear();
    platform().results["initialize"] = {SA_AIS_ERR_TRY_AGAIN, SA_AIS_ERR_VERSION};
    std::unique_ptr<FaultManagementI> client(v1::getFmiFactory()->createFaultManagement());
    EXPECT_EQ(platform().events,
              (Texts{"getDefaultTraceObject", "registerTraceObject prefix.DolqTraceLU",
                     "initialize A 1 1 null", "usleep 100000", "initialize A 1 1 null",
                     "0 dolqNtfSessionImpl|Initialize Session: errorCode:3",
                     "getDefaultTraceObject", "registerTraceObject prefix.DolqTraceLU"}));
    platform().events.clear();
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

constexpr std::size_t kLongest = 65534;

struct Cut {
    const char* name;
    std::string given;
    std::size_t sent;
};

const Cut kCuts[] = {
    {"Longest", std::string(kLongest, 'x'), kLongest},
    {"OneMore", std::string(kLongest + 1, 'x'), kLongest},
    {"SixteenBitsAround", std::string(65536 + 7, 'x'), kLongest},
    {"WholeCharacter", std::string(kLongest - 3, 'x') + "\xE2\x82\xAC" + "x", kLongest},
    {"SplitInThree", std::string(kLongest - 2, 'x') + "\xE2\x82\xAC", kLongest - 2},
    {"SplitInFour", std::string(kLongest - 3, 'x') + "\xF0\x9F\x9A\xA8", kLongest - 3},
    {"NotUtf8", std::string(kLongest - 4, 'x') + "\xF0\x80\x80\x80\x80", kLongest},
    {"NulInside", std::string("a\0b", 3), 3},
    {"FormatDirectives", "%s%n\xFF", 5},
};

TEST_F(NtfSessionTest, ATextIsSentAsFarAsItGoesAndTheCutIsTraced) {
    for (const auto& row : kCuts) {
        SCOPED_TRACE(row.name);
        const auto client = adapter();
        const std::string& given = row.given;
        raise(*client, kObject, given, {given});
        EXPECT_EQ(sentAlarm().additionalText, given.substr(0, row.sent));
        EXPECT_EQ(sentAlarm().additionalInfo.back(), given.substr(0, row.sent));
        const std::string lengths =
            ", length:" + std::to_string(given.size()) + ", sent:" + std::to_string(row.sent);
        EXPECT_EQ(platform().traces(0),
                  given.size() == row.sent
                      ? Texts{}
                      : (Texts{"dolqNtfSessionImpl|Alarm field cut: field:additionalText" + lengths,
                               "dolqNtfSessionImpl|Alarm field cut: field:additionalInfo, entry:1" +
                                   lengths}));
    }
}

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
    for (const std::size_t given : {65534U, 65535U, 65541U}) { // the correlation info comes on top
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
