#include "LibraryTest.h"
#include "mapping/ConfigurationParserFactory.h"
#include "mapping/dolqNotificationMapImpl.h"
#include "threadSpecificSingleton"

namespace {

using dolq::MappingTable;

struct Lookup {
    const char* name;
    std::vector<std::pair<std::uint32_t, const char*>> entries; // minor types count from 1
    const char* moClass;
    std::uint32_t found; // 0: none
    std::size_t multipleMatches;
    const char* candidate; // class named by the single-candidate traces, or null
    bool closingTraceOfV2;
};

class LookupTest : public LibraryTest {
protected:
    /// Everything a lookup of fault 7 leaves behind in a map of either generation.
    static void check(dolq::MappingI& map, const Lookup& row, bool closingTrace) {
        platform().events.clear();
        std::uint32_t minorType = 4711;
        EXPECT_EQ(map.getMinorType(7, minorType, row.moClass), row.found != 0);
        EXPECT_EQ(minorType, row.found != 0 ? row.found : 4711);

        const std::string unit = "dolqNotificationMapImpl|";
        Texts expected{"4 " + unit + "Calling getMinorType in thread: " + pid() + '.'};
        expected.insert(
            expected.end(), row.multipleMatches,
            "8 " + unit +
                "dolq::NotificationMap::getMinorType, found multiple matches for faultId: 7 in thread: " +
                pid() + '.');
        if (row.candidate != nullptr) {
            expected.push_back(
                "8 " + unit +
                " Got no full match of faultId and moClass, but found a single faultId. faultId: 7, moClass: \"" +
                row.candidate + "\", foundMinorType: 1.");
            expected.push_back("0 " + unit +
                               "Found no matching alarm for faultId: 7 and moClass: \"" +
                               row.candidate + "\", check the alarm mapping configuration.");
        }
        if (closingTrace) {
            expected.push_back(
                "8 " + unit +
                "Found no match for faultId: 7 in Load Module: , Rev:R1, ThreadId: " + pid());
        }
        EXPECT_EQ(platform().events, expected);
    }
};

const Lookup kLookups[] = {
    {"EmptyTable", {}, "A", 0, 0, nullptr, true},
    {"OtherFaults", {{6, "A"}, {8, "A"}}, "A", 0, 0, nullptr, true},
    {"SecondOfTwo", {{7, "A"}, {7, "B"}}, "B", 2, 0, nullptr, false},
    {"ThirdOfThree", {{7, "A"}, {7, "B"}, {7, "C"}}, "C", 3, 1, nullptr, false},
    {"SingleCandidate", {{7, "A"}, {8, "C"}}, "C", 0, 0, "A", false},
    {"SeveralOthers", {{7, "A"}, {7, "B"}, {7, "D"}}, "C", 0, 2, nullptr, false},
    {"EmptyClassIsAClass", {{7, ""}}, "", 1, 0, nullptr, false},
    {"EmptyClassMatchesNoOther", {{7, ""}}, "X", 0, 0, "", false},
    {"LetterCase", {{7, "Cell"}}, "cell", 0, 0, "Cell", false},
    {"NoTrimming", {{7, " A "}}, "A", 0, 0, " A ", false},
    {"LastMappingWins", {{7, "A"}, {7, "A"}}, "A", 2, 0, nullptr, false},
};

TEST_F(LookupTest, FindsTheExactMatchAndTracesWhatElseThereIs) {
    const ScopedEnvironment revision("ZBN_REV", "R1");
    const ScopedEnvironment otherNumber("ZBN_NO", "not read here");
    for (const Lookup& row : kLookups) {
        SCOPED_TRACE(row.name);
        MappingTable table;
        dolq::NotificationMap map;
        std::uint32_t minorType = 0;
        for (const auto& [faultId, moClass] : row.entries) {
            table.set(faultId, ++minorType, moClass);
            map.setMapping(faultId, minorType, moClass);
        }
        dolq::NotificationMapV2 mapV2(table);
        table = {}; // the map keeps its own
        check(map, row, row.found == 0);
        check(mapV2, row, row.closingTraceOfV2);
    }
}

class ConfigurationTest : public LibraryTest {
protected:
    v1::ConfigurationI& configuration() { return *v1::getFmiFactory()->getConfiguration(); }
    using Slot =
        cxxutils::threadspecific::v1::ThreadSpecificSingleton<dolq::ConfigurationParserFactory>;
};

const char kDeprecated[] =
    "0 dolqNotificationMapImpl|This method is deprecated and replaced by setMapping(faultId, minorType, ManagedObjectClass).";

TEST_F(ConfigurationTest, SetMappingWithoutAClassSetsTheEmptyOneAndSaysItIsDeprecated) {
    const auto client = adapter({});
    configuration().setMapping(7, 4294967295U);
    EXPECT_EQ(platform().events,
              (Texts{"8 dolqNotificationMapImpl|Setmapping: faultId:7, minorType:4294967295",
                     kDeprecated}));
    client->ceaseAlarm("Top=1,", 7, "");
    EXPECT_EQ(sentAlarm().majorId, 65535U);
}

TEST_F(ConfigurationTest, AConfigurationFileSetsTheTwoBuiltInMappings) {
    const auto client = adapter({{1025, "Object2", 1}});
    configuration().configurationFile("");
    EXPECT_EQ(platform().events, Texts{"8 dolqNotificationMapImpl|ConfigurationFile: fileName:"});
    client->ceaseAlarm("A=1,Object2=2", 1025, "");
    EXPECT_EQ(platform().sent.back().minorId, 1U);

    platform().events.clear();
    configuration().configurationFile("/nowhere%s");
    EXPECT_EQ(platform().events,
              (Texts{"8 dolqNotificationMapImpl|ConfigurationFile: fileName:/nowhere%s",
                     "8 dolqNotificationMapImpl|Setmapping: faultId:1025, minorType:9175040",
                     kDeprecated}));
    client->ceaseAlarm("A=1,Object2=2", 1025, "");
    client->ceaseAlarm("", 1025, "");
    ASSERT_EQ(platform().sent.size(), 3U);
    EXPECT_EQ(platform().sent[1].majorId, 0x8CU);
    EXPECT_EQ(platform().sent[2].majorId, 0x8CU);
}

TEST_F(ConfigurationTest, AnInstalledParserServesEveryFileName) {
    struct Parser final : dolq::ConfigurationParserI {
        void parse(v1::ConfigurationI& configuration) override {
            configuration.setMapping(7, 0x50000, "Unit");
        }
    };
    const auto client = adapter({});
    Slot::getInstance()->setParser(std::make_shared<Parser>());
    configuration().configurationFile("");
    Slot::getInstance()->clearParser();
    client->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(sentAlarm().majorId, 5U);
    EXPECT_EQ(Slot::getInstance()->createParser(""), nullptr);
    Slot::reset();
}

} // namespace
