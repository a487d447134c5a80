#include "LibraryTest.h"

namespace {

using AdapterTest = LibraryTest;

/// The arguments that every row below gives.
constexpr char kCommon[] =
    "notificationObject:Top=1,Unit=7, faultId:7, faultIdName:fault, additionalText:text, additionalInfo:a, <empty string>, b, perceivedSeverity:3, ";
const Texts kInfo{"a", "", "b"};
#define COMMON "Top=1,Unit=7", 7, "fault", "text", kInfo, 3

struct Operation {
    const char* name;
    void (*call)(FaultManagementI&);
    Texts entryTraces;
    std::string correlationInfo;
    std::string programGroup; // empty: none
};

class OperationTest : public LibraryTest, public testing::WithParamInterface<Operation> {};

const std::string kIdentity = R"(CI={"C": [{"I": "system-uuid","n": "compute-1"}],)";
const std::string kGiven = R"(CI={"C": [{"I": "sys","n": "comp"}],)";

const Operation kOperations[] = {
    {"Combined",
     [](FaultManagementI& a) {
         a.raiseAlarm(COMMON, 9, Events{5, 0, 6});
     },
     {std::string("dolqAdapterImpl| Raise Alarm initiated: ") + kCommon +
      "eventId:9, correlatedEvents:5, 0, 6, programGroup:nonePgGrp"},
     kIdentity + R"("S": ["uuid-5","uuid-6"]})",
     ""},
    {"CombinedWithoutEvents",
     [](FaultManagementI& a) { a.raiseAlarm(COMMON, 9, Events{}); },
     {std::string("dolqAdapterImpl| Raise Alarm initiated: ") + kCommon +
      "eventId:9, correlatedEvents:Empty, programGroup:nonePgGrp"},
     kIdentity + R"("P": "uuid-9"})",
     ""},
    {"Primary32",
     [](FaultManagementI& a) { a.raisePrimaryAlarm(COMMON, 4294967295U, "sys", "comp"); },
     {std::string("dolqAdapterImpl|Raise Primary Alarm Initiated: ") + kCommon +
      "eventId:4294967295, systemUUID:sys, computeName:comp"},
     kGiven + R"("P": "uuid-4294967295"})",
     ""},
    {"Primary32Group",
     [](FaultManagementI& a) { a.raisePrimaryAlarm(COMMON, 9, "sys", "comp", 0U); },
     {"dolqAdapterImpl| Alarm program group: gratPgGrp",
      std::string("dolqAdapterImpl|Raise Primary Alarm Initiated: ") + kCommon +
          "eventId:9, systemUUID:sys, computeName:comp, programGroup:gratPgGrp"},
     kGiven + R"("P": "uuid-9"})",
     "gratPgGrp"},
    {"Primary128",
     [](FaultManagementI& a) { a.raisePrimaryAlarm(COMMON, std::string("u\"1"), "sys", "comp"); },
     {std::string("dolqAdapterImpl|Raise Primary Alarm initiated: ") + kCommon +
      "correlatedEvent128Bit:u\"1, systemUUID:sys, computeName:comp"},
     kGiven + R"("P": "u"1"})",
     ""},
    {"Primary128Group",
     [](FaultManagementI& a) { a.raisePrimaryAlarm(COMMON, std::string("u1"), "", "", 1U); },
     {"dolqAdapterImpl| Alarm program group: wratPgGrp",
      std::string("dolqAdapterImpl|Raise Primary Alarm initiated: ") + kCommon +
          "correlatedEvent128Bit:u1, systemUUID:, computeName:, programGroup:wratPgGrp"},
     kIdentity + R"("P": "u1"})",
     "wratPgGrp"},
    {"Secondary32",
     [](FaultManagementI& a) { a.raiseSecondaryAlarm(COMMON, "sys", "comp", Events{7}); },
     {std::string("dolqAdapterImpl|Raise Secondary Alarm Initiated: ") + kCommon +
      "systemUUID:sys, computeName:comp, correlatedEvents32Bit:7"},
     kGiven + R"("S": ["uuid-7"]})",
     ""},
    {"Secondary32Group",
     [](FaultManagementI& a) {
         a.raiseSecondaryAlarm(COMMON, "", "", Events{7, 42}, 2U);
     },
     {"dolqAdapterImpl| Alarm program group: lratPgGrp",
      std::string("dolqAdapterImpl|Raise Secondary Alarm Initiated: ") + kCommon +
          "systemUUID:, computeName:, correlatedEvents32Bit:7, 42, programGroup:lratPgGrp"},
     kIdentity + R"("S": ["uuid-7","uuid-42"]})",
     "lratPgGrp"},
    {"Secondary128",
     [](FaultManagementI& a) {
         a.raiseSecondaryAlarm(COMMON, "sys", "comp", Texts{"u1", ""});
     },
     {std::string("dolqAdapterImpl|Raise Secondary Alarm Initiated: ") + kCommon +
      "systemUUID:sys, computeName:comp, correlatedEvents128Bit:u1, <empty string>"},
     kGiven + R"("S": ["u1",""]})",
     ""},
    {"CombinedGroup",
     [](FaultManagementI& a) {
         a.raiseAlarm(COMMON, 9, Events{0, 5}, 3U);
     },
     {"dolqAdapterImpl| Alarm program group: nrPgGrp",
      std::string("dolqAdapterImpl| Raise Alarm initiated: ") + kCommon +
          "eventId:9, correlatedEvents:0, 5, programGroup:nrPgGrp"},
     kIdentity + R"("P": "uuid-9"})",
     "nrPgGrp"},
    {"Secondary128Group",
     [](FaultManagementI& a) { a.raiseSecondaryAlarm(COMMON, "sys", "comp", Texts{"u1"}, 4U); },
     {"dolqAdapterImpl| Alarm program group: nonePgGrp",
      std::string("dolqAdapterImpl|Raise Secondary Alarm Initiated: ") + kCommon +
          "systemUUID:sys, computeName:comp, correlatedEvents128Bit:u1, programGroup:nonePgGrp"},
     kGiven + R"("S": ["u1"]})",
     ""},
};

TEST_P(OperationTest, TracesItsArgumentsAndSendsOneAlarm) {
    const Operation& row = GetParam();
    const auto client = adapter();
    row.call(*client);

    const std::string info = row.correlationInfo + ", a, b";
    const std::string group = row.programGroup.empty() ? "nonePgGrp" : row.programGroup;
    Texts flow = row.entryTraces;
    flow.insert(
        flow.end(),
        {"dolqNotificationMapImpl|Calling getMinorType in thread: " + pid() + '.',
         "dolqAdapterImpl|SendNotification: notificationObject:Top=1,Unit=7, newSeverity:5, additionalText:text, newAdditionalInfoStr:" +
             info + ", majorId:1, minorId:2, mappedPgGrp:" + group,
         "dolqNtfSessionImpl|SendNotification: notificationObject:Top=1,Unit=7, perceivedSeverity:5, additionalText:text, additionalInfo:" +
             info + ", majorId:1, minorId:2, programGroup:" + group});
    EXPECT_EQ(platform().traces(4), flow);

    const FakePlatform::Alarm& alarm = sentAlarm();
    EXPECT_EQ(alarm.object, kObject);
    EXPECT_EQ(alarm.notifyingObject, kObject);
    EXPECT_EQ(alarm.severity, 5U);
    EXPECT_EQ(alarm.vendorId, 32473U);
    EXPECT_EQ(alarm.majorId, 1U);
    EXPECT_EQ(alarm.minorId, 2U);
    EXPECT_EQ(alarm.additionalText, "text");
    EXPECT_EQ(alarm.additionalInfo, (Texts{row.correlationInfo, "a", "b"}));
    EXPECT_EQ(alarm.repairActions,
              row.programGroup.empty() ? Texts{} : Texts{"0 " + row.programGroup});
    EXPECT_EQ(alarm.constants, (std::vector<int>{0x4000, 74, 1, 255}));
}

INSTANTIATE_TEST_SUITE_P(All, OperationTest, testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.name; });

TEST_F(AdapterTest, ACeaseCarriesNothingButTheAlarm) {
    const auto client = adapter({{7, "Unit", 0x0000FFFF}});
    client->ceaseAlarm(kObject, 7, "fault");
    EXPECT_EQ(
        platform().traces(4).front(),
        "dolqAdapterImpl| Cease Alarm initiated: notificationObject:Top=1,Unit=7, faultId:7, faultIdName:fault");
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
    client->raisePrimaryAlarm(kObject, 8, "", "", {}, 9, std::string("u"), "s", "c"); // not mapped
    EXPECT_EQ(
        platform().traces(4)[1],
        "dolqAdapterImpl|Raise Alarm called with unknown perceived severity: perceivedSeverity:9");
    EXPECT_EQ(
        platform().traces(0),
        Texts{"dolqAdapterImpl| Minor type not found. notificationObject:Top=1,Unit=7, faultId:8"});
}

struct MoClass {
    const char* name;
    std::string object;
    const char* expected;
    bool noComma;
    bool noEqual;
};

class MoClassTest : public LibraryTest, public testing::WithParamInterface<MoClass> {};

TEST_P(MoClassTest, IsTheAttributeOfTheLastRelativeName) {
    const MoClass& row = GetParam();
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

INSTANTIATE_TEST_SUITE_P(
    Table, MoClassTest,
    testing::ValuesIn(std::vector<MoClass>{
        {"Plain", "Top=1,Unit=7", "Unit", false, false},
        {"WhiteSpaceAnywhere", "Top=1,\tU n\ni\vt\f \r= 7", "Unit", false, false},
        {"OnePair", "Unit=7", "Unit", true, false},
        {"NoEqual", "Top=1,Unit", "", false, true},
        {"Nothing", "", "", true, true},
        {"CommaAtTheEnd", "Top=1,Unit=7,", "", false, true},
        {"OnlyCommas", ",,,", "", false, true},
        {"EmptyAttribute", "Top=1,=7", "", false, false},
        {"CommaInTheValue", "Top=1,Unit=a,b", "", false, true},
        {"EqualInTheValue", "Top=1,Unit=a=b", "Unit", false, false},
        {"HighBytes", "Top=1,\xC3\x9Cnit\xA0=7", "\xC3\x9Cnit\xA0", false, false},
        {"Nul", std::string("Top=1\0,Unit=7", 13), "Unit", false, false},
        {"FormatDirectives", "%s%n,Unit=%s%n", "Unit", false, false},
        {"Megabyte", std::string(1 << 20, 'x') + ",Unit=" + std::string(1 << 20, 'y'), "Unit",
         false, false},
    }),
    [](const auto& row) { return row.param.name; });

struct Refusal {
    const char* name;
    const char* systemUUID;
    const char* computeName; // of the environment
    void (*call)(FaultManagementI&);
    Texts failures;
    const char* lastInfo; // of the alarm sent, null when none is
    Texts serviceCalls;
};

class CorrelationTest : public LibraryTest, public testing::WithParamInterface<Refusal> {};

#define PLAIN "Top=1,Unit=7", 7, "", "", Texts{}, 0
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

TEST_P(CorrelationTest, TracesWhatIsMissing) {
    const Refusal& row = GetParam();
    const auto client = adapter();
    const ScopedEnvironment systemUUID("SYSTEM_UUID", row.systemUUID);
    const ScopedEnvironment computeName("COMPUTE_NAME", row.computeName);
    platform().underivableEvents = {13, 14};
    row.call(*client);
    EXPECT_EQ(platform().traces(0), row.failures);
    Texts serviceCalls;
    for (const std::string& call : platform().calls()) {
        if (call.rfind("get", 0) == 0) {
            serviceCalls.push_back(call);
        }
    }
    EXPECT_EQ(serviceCalls, row.serviceCalls);
    ASSERT_EQ(platform().sent.size(), row.lastInfo != nullptr ? 1U : 0U);
    if (row.lastInfo != nullptr) {
        EXPECT_EQ(sentAlarm().additionalInfo, Texts{row.lastInfo});
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, CorrelationTest,
    testing::ValuesIn(std::vector<Refusal>{
        {"ZeroEvent",
         "s",
         "c",
         [](FaultManagementI& a) { a.raisePrimaryAlarm(PLAIN, 0, "", ""); },
         {kZeroEvent, kNoPrimary},
         R"(CI={"C": [{"I": "s","n": "c"}],"P": ""})",
         {}},
        {"CombinedWithNothing",
         "s",
         "c",
         [](FaultManagementI& a) { a.raiseAlarm(PLAIN, 0, Events{}); },
         {kZeroEvent, kNoPrimary},
         R"(CI={"C": [{"I": "s","n": "c"}],"P": ""})",
         {}},
        {"UnderivableEvent",
         "s",
         "c",
         [](FaultManagementI& a) { a.raisePrimaryAlarm(PLAIN, 13, "", ""); },
         {"dolqAdapterImpl|getDerivedCorrelationUUID failed for eventId: 13", kNoPrimary},
         R"(CI={"C": [{"I": "s","n": "c"}],"P": ""})",
         {"getAPI", "getDerivedCorrelationUUID 13"}},
        {"NoPrimaryUUID",
         "s",
         "c",
         [](FaultManagementI& a) { a.raisePrimaryAlarm(PLAIN, std::string(), "", ""); },
         {kNoPrimary},
         R"(CI={"C": [{"I": "s","n": "c"}],"P": ""})",
         {}},
        {"NothingInTheEnvironment",
         nullptr,
         nullptr,
         [](FaultManagementI& a) { a.raisePrimaryAlarm(PLAIN, std::string("u"), "", ""); },
         {kNoSystemUUID, kNoComputeName, kNoIdentity},
         nullptr,
         {}},
        {"EmptyVariable",
         "",
         "c",
         [](FaultManagementI& a) { a.raiseSecondaryAlarm(PLAIN, "", "", Texts{"u"}); },
         {kNoIdentity},
         nullptr,
         {}},
        {"HalfAnIdentityGiven",
         "s",
         "c",
         [](FaultManagementI& a) { a.raisePrimaryAlarm(PLAIN, std::string("u"), "given", ""); },
         {kNoIdentity},
         nullptr,
         {}},
        {"OtherHalfGiven",
         "s",
         "c",
         [](FaultManagementI& a) { a.raiseSecondaryAlarm(PLAIN, "", "given", Texts{"u"}); },
         {kNoIdentity},
         nullptr,
         {}},
        {"NoEvents32",
         "s",
         "c",
         [](FaultManagementI& a) { a.raiseSecondaryAlarm(PLAIN, "", "", Events{}); },
         {kNoSecondary},
         nullptr,
         {}},
        {"NoEvents128",
         nullptr,
         nullptr,
         [](FaultManagementI& a) { a.raiseSecondaryAlarm(PLAIN, "", "", Texts{}); },
         {kNoSecondary},
         nullptr,
         {}},
        {"OnlyZeros",
         "s",
         "c",
         [](FaultManagementI& a) {
             a.raiseSecondaryAlarm(PLAIN, "", "", Events{0, 0});
         },
         {kSkipped, kSkipped, kNoSecondary},
         nullptr,
         {"getAPI"}},
        {"SomeUnderivable",
         "s",
         "c",
         [](FaultManagementI& a) {
             a.raiseSecondaryAlarm(PLAIN, "", "", Events{13, 0, 5});
         },
         {"dolqAdapterImpl|getDerivedCorrelationUUID failed for correlatedEvent32Bit: 13",
          kSkipped},
         R"(CI={"C": [{"I": "s","n": "c"}],"S": ["uuid-5"]})",
         {"getAPI", "getDerivedCorrelationUUID 13", "getDerivedCorrelationUUID 5"}},
    }),
    [](const auto& row) { return row.param.name; });

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
}

TEST_F(AdapterTest, AFailedDerivationIsSentAsTheServiceLeftIt) {
    const auto client = adapter();
    platform().underivableEvents = {13};
    platform().leftByFailedDerivation = "partial";
    client->raisePrimaryAlarm(PLAIN, 13, "s", "c");
    EXPECT_EQ(platform().traces(0),
              Texts{"dolqAdapterImpl|getDerivedCorrelationUUID failed for eventId: 13"});
    EXPECT_EQ(sentAlarm().additionalInfo,
              Texts{R"(CI={"C": [{"I": "s","n": "c"}],"P": "partial"})"});
}

TEST_F(AdapterTest, ReadsTheEnvironmentAnewAtEachAlarm) {
    const auto client = adapter();
    client->raisePrimaryAlarm(PLAIN, std::string("u"), "", "");
    const ScopedEnvironment moved("COMPUTE_NAME", "compute-2");
    client->raisePrimaryAlarm(PLAIN, std::string("u"), "", "");
    ASSERT_EQ(platform().sent.size(), 2U);
    EXPECT_EQ(platform().sent.back().additionalInfo.front(),
              R"(CI={"C": [{"I": "system-uuid","n": "compute-2"}],"P": "u"})");
}

TEST_F(AdapterTest, HostileTextsAreSentAsTheyAre) {
    const auto client = adapter();
    const std::string hostile = "%s%n%d \xFF\xC3 \"}]";
    client->raisePrimaryAlarm(kObject, 7, hostile, hostile, {hostile}, 0, hostile, hostile,
                              hostile);
    EXPECT_EQ(sentAlarm().additionalText, hostile);
    EXPECT_EQ(sentAlarm().additionalInfo.back(), hostile);
}

TEST_F(AdapterTest, FormatsNothingWhenNoGroupIsEnabled) {
    const auto client = adapter();
    platform().enabledGroups.clear();
    platform().formattedTexts = 0;
    client->raiseAlarm(PLAIN, 0, Events{}, 9U);
    client->ceaseAlarm("none", 8, "");
    EXPECT_EQ(platform().formattedTexts, 0);
}

TEST_F(AdapterTest, DestroyingOneAdapterLeavesTheOtherWorking) {
    auto first = adapter();
    const auto second = adapter();
    first.reset();
    EXPECT_EQ(
        platform().calls(),
        (Texts{"deregisterTraceObject prefix.DolqTraceLU", "getDefaultTraceObject", "finalize",
               "deregisterTraceObject prefix.DolqTraceLU", "getDefaultTraceObject"}));
    second->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(platform().sent.size(), 1U);
    EXPECT_NE(platform().traces(4).front().find("Cease Alarm initiated"), std::string::npos);
}

} // namespace
