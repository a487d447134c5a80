#include <locale>

#include "Operations.h"

namespace {

using AdapterTest = LibraryTest;

#define PLAIN "Top=1,Unit=7", 7, "", "", Texts{}, 0

TEST_F(AdapterTest, EachRaiseTracesItsArgumentsAndSendsOneAlarm) {
    for (const auto& row : kOperations) {
        SCOPED_TRACE(row.name);
        const auto client = adapter({{7, kClass, 0x10002}});
        row.call(*client);

        const std::string group = row.programGroup != nullptr ? row.programGroup : "nonePgGrp";
        Texts flow;
        if (row.programGroup != nullptr) {
            flow.push_back("dolqAdapterImpl| Alarm program group: " + group);
        }
        const std::string object = "notificationObject:" + kUnitObject + ", ";
        const std::string text = "additionalText:" + kText + ", ";
        flow.push_back("dolqAdapterImpl|" + std::string(row.begin) + object +
                       "faultId:7, faultIdName:" + kName + ", " + text +
                       "additionalInfo:" + kInfo[0] + ", <empty string>, " + kInfo[2] +
                       ", perceivedSeverity:3, " + row.end);
        flow.push_back("dolqNotificationMapImpl|Calling getMinorType in thread: " + pid() + '.');
        const std::string sent = std::string(row.correlationInfo) + ", " + kInfo[0] + ", " +
                                 kInfo[2] + ", majorId:1, minorId:2, ";
        flow.push_back("dolqAdapterImpl|SendNotification: " + object + "newSeverity:5, " + text +
                       "newAdditionalInfoStr:" + sent + "mappedPgGrp:" + group);
        flow.push_back("dolqNtfSessionImpl|SendNotification: " + object + "perceivedSeverity:5, " +
                       text + "additionalInfo:" + sent + "programGroup:" + group);
        EXPECT_EQ(platform().traces(4), flow);

        const FakePlatform::Alarm& alarm = sentAlarm();
        EXPECT_EQ(alarm.object, kUnitObject);
        EXPECT_EQ(alarm.notifyingObject, kUnitObject);
        EXPECT_EQ(alarm.severity, 5U);
        EXPECT_EQ(alarm.vendorId, 32473U);
        EXPECT_EQ(alarm.majorId, 1U);
        EXPECT_EQ(alarm.minorId, 2U);
        EXPECT_EQ(alarm.additionalText, kText);
        EXPECT_EQ(alarm.additionalInfo, (Texts{row.correlationInfo, kInfo[0], kInfo[2]}));
        EXPECT_EQ(alarm.repairActions, group == "nonePgGrp" ? Texts{} : Texts{"0 " + group});
        EXPECT_EQ(alarm.constants, (std::vector<int>{0x4000, 74, 1, 255, 0}));
    }
}

TEST_F(AdapterTest, ACeaseCarriesNothingButTheAlarm) {
    const auto client = adapter({{7, "Unit", 0x0000FFFF}});
    client->ceaseAlarm(kObject, 7, "fault");
    EXPECT_EQ(
        platform().traces(4).front(),
        "dolqAdapterImpl| Cease Alarm initiated: notificationObject:Top=1,Unit=7, faultId:7, faultIdName:fault");
    EXPECT_NE(platform().traces(4).back().find(", additionalInfo:Empty,"), std::string::npos);
    const FakePlatform::Alarm& alarm = sentAlarm();
    EXPECT_EQ(alarm.severity, 0U);
    EXPECT_EQ(alarm.majorId, 0U);
    EXPECT_EQ(alarm.minorId, 65535U);
    EXPECT_EQ(alarm.additionalText, "");
    EXPECT_EQ(alarm.additionalInfo, Texts{});
    EXPECT_EQ(alarm.repairActions, Texts{});
}

TEST_F(AdapterTest, TranslatesEverySeverityCodeAndTracesUnknownOnesFirst) {
    const auto client = adapter();
    const std::uint32_t sentAs[] = {2, 3, 4, 5, 1, 1};
    for (std::uint32_t code = 0; code < 6; ++code) {
        client->raisePrimaryAlarm(kObject, 7, "", "", {}, code, std::string("u"), "s", "c");
        ASSERT_EQ(platform().sent.size(), code + 1U);
        EXPECT_EQ(platform().sent.back().severity, sentAs[code]) << code;
    }
    platform().events.clear();
    client->raisePrimaryAlarm("Unit", 8, "", "", {}, 9, std::string("u"), "s", "c"); // not mapped
    platform().events.erase(platform().events.begin()); // the operation's own
    EXPECT_EQ(
        platform().events,
        (Texts{
            "4 dolqAdapterImpl|Raise Alarm called with unknown perceived severity: perceivedSeverity:9",
            "8 dolqAdapterImpl|ObjClassParser- NotificationObj has no Comma Delimiter: notificationObject:Unit",
            "8 dolqAdapterImpl| ObjClassParser- NotificationObj has no Equal Delimiter: notificationObject:Unit",
            "4 dolqNotificationMapImpl|Calling getMinorType in thread: " + pid() + '.',
            "8 dolqNotificationMapImpl|Found no match for faultId: 8 in Load Module: , Rev:, ThreadId: " +
                pid(),
            "0 dolqAdapterImpl| Minor type not found. notificationObject:Unit, faultId:8"}));
}

struct MoClass {
    const char* name;
    std::string object;
    const char* expected;
    bool noComma;
    bool noEqual;
};

const MoClass kMoClasses[] = {
    {"WhiteSpaceAnywhere", "Top=1,\tU n\ni\vt\f \r= 7", "Unit", false, false},
    {"OnePair", "Unit=7", "Unit", true, false},
    {"NoEqual", "Top=1,Unit", "", false, true},
    {"Nothing", "", "", true, true},
    {"CommaAtTheEnd", "Top=1,Unit=7,", "", false, true},
    {"EmptyAttribute", "Top=1,=7", "", false, false},
    {"EqualInTheValue", "Top=1,Unit=a=b", "Unit", false, false},
    {"HighBytes", "Top=1,\xC3\x9Cnit\xA0=7", "\xC3\x9Cnit\xA0", false, false},
    {"Nul", std::string("Top=1\0,Unit=7", 13), "Unit", false, false},
    {"FormatDirectives", "%s%n,Unit=%s%n", "Unit", false, false},
    {"Megabyte", std::string(1 << 20, 'x') + ",Unit=" + std::string(1 << 20, 'y'), "Unit", false,
     false},
};

TEST_F(AdapterTest, TheClassIsTheAttributeOfTheLastRelativeName) {
    for (const auto& row : kMoClasses) {
        SCOPED_TRACE(row.name);
        v1::freeFmiFactory(); // with the row before
        const auto client = adapter({{7, row.expected, 1}});
        client->ceaseAlarm(row.object, 7, "");
        EXPECT_EQ(platform().sent.size(), 1U);
        const std::string shown = row.object.c_str(); // up to a NUL
        Texts expected;
        if (row.noComma) {
            expected.push_back(
                "dolqAdapterImpl|ObjClassParser- NotificationObj has no Comma Delimiter: notificationObject:" +
                shown);
        }
        if (row.noEqual) {
            expected.push_back(
                "dolqAdapterImpl| ObjClassParser- NotificationObj has no Equal Delimiter: notificationObject:" +
                shown);
        }
        EXPECT_EQ(platform().traces(8), expected);
    }
}

struct Refusal {
    const char* name;
    void (*call)(FaultManagementI&);
    Texts failures;
    const char* correlation; // of the alarm sent, behind its identity; null when none is sent
};

const char kZeroEvent[] =
    "dolqAdapterImpl|Alarm correlation info incomplete due to eventId is zero. Object:Top=1,Unit=7, Fault Id: 7";
const char kNoPrimary[] =
    "dolqAdapterImpl|Alarm correlation info incomplete due to correlatedEvent128Bit is empty. Object:Top=1,Unit=7, Fault Id: 7";
const char kNoSecondary[] =
    "dolqAdapterImpl|Alarm not raised due to correlatedEvents128Bit is empty. Object:Top=1,Unit=7, Fault Id: 7";
const char kNoIdentity[] =
    "dolqAdapterImpl|Alarm not raised due to either systemUUID or computeName is empty. Object:Top=1,Unit=7, Fault Id: 7";
const char kNoSystemUUID[] =
    "dolqAdapterImpl|Environment variable systemUUID could not be retreived!";
const char kNoComputeName[] =
    "dolqAdapterImpl|Environment variable computeName could not be retreived!";
const char kSkipped[] =
    "dolqAdapterImpl|No mapping of zero-valued correlatedEvent32Bit to correlationUUID occured.";

const Refusal kRefusals[] = {
    {"ZeroEvent",
     [](auto& a) { a.raisePrimaryAlarm(PLAIN, 0, "", ""); },
     {kZeroEvent, kNoPrimary},
     R"("P": ""})"},
    {"NoPrimaryUUID",
     [](auto& a) { a.raisePrimaryAlarm(PLAIN, std::string(), "", ""); },
     {kNoPrimary},
     R"("P": ""})"},
    {"NothingInTheEnvironment",
     [](auto& a) {
         unsetenv("SYSTEM_UUID");
         unsetenv("COMPUTE_NAME");
         a.raisePrimaryAlarm(PLAIN, std::string("u"), "", "");
     },
     {kNoSystemUUID, kNoComputeName, kNoIdentity},
     nullptr},
    {"EmptyVariable",
     [](auto& a) {
         setenv("SYSTEM_UUID", "", 1);
         a.raiseSecondaryAlarm(PLAIN, "", "", Texts{"u"});
     },
     {kNoIdentity},
     nullptr},
    {"HalfAnIdentityGiven",
     [](auto& a) { a.raisePrimaryAlarm(PLAIN, std::string("u"), "given", ""); },
     {kNoIdentity},
     nullptr},
    {"OtherHalfGiven",
     [](auto& a) { a.raiseSecondaryAlarm(PLAIN, "", "given", Texts{"u"}); },
     {kNoIdentity},
     nullptr},
    {"NoEvents128",
     [](auto& a) {
         unsetenv("SYSTEM_UUID"); // which is not asked for any more
         a.raiseSecondaryAlarm(PLAIN, "", "", Texts{});
     },
     {kNoSecondary},
     nullptr},
    {"OnlyZeros",
     [](auto& a) {
         a.raiseSecondaryAlarm(PLAIN, "", "", Events{0, 0});
     },
     {kSkipped, kSkipped, kNoSecondary},
     nullptr},
    {"LeftByAFailedDerivation",
     [](auto& a) {
         platform().leftByFailedDerivation = "partial";
         a.raisePrimaryAlarm(PLAIN, 13, "", "");
     },
     {"dolqAdapterImpl|getDerivedCorrelationUUID failed for eventId: 13"},
     R"("P": "partial"})"},
    {"LeftBeforeAnEmptyUUID", // whose text is not that of the event before
     [](auto& a) {
         a.raiseSecondaryAlarm(PLAIN, "", "", Events{13, 0, 15, 5});
     },
     {"dolqAdapterImpl|getDerivedCorrelationUUID failed for correlatedEvent32Bit: 13", kSkipped},
     R"("S": ["","uuid-5"]})"},
};

TEST_F(AdapterTest, TracesWhatACorrelationLacks) {
    for (const auto& row : kRefusals) {
        SCOPED_TRACE(row.name);
        const auto client = adapter();
        client->raisePrimaryAlarm(PLAIN, std::string("u"), "", ""); // in another environment
        platform().sent.clear();
        platform().events.clear();
        setenv("SYSTEM_UUID", "s", 1);
        setenv("COMPUTE_NAME", "c", 1);
        platform().underivableEvents = {13};
        platform().eventsWithEmptyUUID = {15};
        row.call(*client);
        EXPECT_EQ(platform().traces(0), row.failures);
        ASSERT_EQ(platform().sent.size(), row.correlation != nullptr ? 1U : 0U);
        if (row.correlation != nullptr) {
            EXPECT_EQ(sentAlarm().additionalInfo,
                      Texts{R"(CI={"C": [{"I": "s","n": "c"}],)" + std::string(row.correlation)});
        }
    }
}

TEST_F(AdapterTest, WithoutACorrelationServiceNoDerivedAlarmIsRaised) {
    const auto client = adapter();
    platform().correlationService = false;
    client->raisePrimaryAlarm(PLAIN, 5, "s", "c");
    client->raiseSecondaryAlarm(PLAIN, "s", "c", Events{5});
    EXPECT_EQ(
        platform().traces(0),
        (Texts{"dolqAdapterImpl|ZumCs getAPI returns a null pointer. Alarm not raised.",
               "dolqAdapterImpl|ZumCs getAPI call returns a null pointer. Alarm not raised."}));
    EXPECT_TRUE(platform().sent.empty());
    client->raiseSecondaryAlarm(PLAIN, "s", "c", Events{}); // which asks for none
    EXPECT_EQ(platform().traces(0).back(), kNoSecondary);
    client->raisePrimaryAlarm(PLAIN, 0, "s", "c"); // which needs none
    EXPECT_EQ(platform().sent.size(), 1U);
}

TEST_F(AdapterTest, ListsOfNumbersAreTracedWithoutTheLocalesGrouping) {
    struct Grouping final : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const auto client = adapter();
    const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
    client->raiseSecondaryAlarm(PLAIN, "s", "c", Events{1234567, 1000});
    std::locale::global(before);
    EXPECT_NE(platform().traces(4).front().find("correlatedEvents32Bit:1234567, 1000"),
              std::string::npos);
}

TEST_F(AdapterTest, FormatsNothingWhenNoGroupIsEnabled) {
    const auto client = adapter();
    platform().enabledGroups.clear();
    platform().formattedTexts = 0;
    client->raiseAlarm(PLAIN, 0, Events{}, 9U);
    client->ceaseAlarm("none", 8, "");
    EXPECT_EQ(platform().formattedTexts, 0);
}

TEST_F(AdapterTest, DestroyingOneAdapterClosesItsOwnSessionAlone) {
    auto first = adapter();
    const auto second = adapter();
    platform().results["finalize"] = {SA_AIS_ERR_TRY_AGAIN, SA_AIS_ERR_TIMEOUT};
    first.reset();
    EXPECT_EQ(platform().calls(),
              (Texts{"deregisterTraceObject prefix.DolqTraceLU", "getDefaultTraceObject",
                     "finalize", "usleep 100000", "finalize",
                     "deregisterTraceObject prefix.DolqTraceLU", "getDefaultTraceObject"}));
    EXPECT_EQ(platform().traces(0), Texts{"dolqNtfSessionImpl|Finalize Session: errorCode:5"});
    second->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(platform().sent.size(), 1U);
    EXPECT_NE(platform().traces(4).front().find("Cease Alarm initiated"), std::string::npos);
}

} // namespace
