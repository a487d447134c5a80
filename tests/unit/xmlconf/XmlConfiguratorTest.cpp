#include "LibraryTest.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace {

using Entries = std::vector<std::tuple<std::uint32_t, std::string, std::uint32_t>>;

struct MappingFile {
    std::string elements; // of the root
    Entries entries;
    Texts traces; // with <file> for the file's name
};

using MappingFileTest = LibraryTest;

const char kSkipped[] =
    "4 dolqXmlConfigurator|When parsing XML file '<file>', a 'mapping' element that did not have all 'faultid' ,'minor_type_id' and 'managed_object_class' integer attributes was encountered";

std::string withFile(std::string text, const std::string& path) {
    const std::size_t at = text.find("<file>");
    return at == std::string::npos ? text : text.replace(at, 6, path);
}

/// The entries of a table, ordered by fault id and class.
auto entriesOf(const dolq::MappingTable& table) {
    Entries entries;
    for (const auto& block : table.blocks()) {
        for (const auto& entry : block) {
            entries.emplace_back(entry.faultId, entry.moClass, entry.minorType);
        }
    }
    return entries;
}

struct RecordingConfiguration final : v1::ConfigurationI {
    void setMapping(std::uint32_t faultId, std::uint32_t minorType) override {
        table.set(faultId, minorType, "");
        ++withoutClass;
    }
    void setMapping(std::uint32_t faultId, std::uint32_t minorType,
                    const std::string& moClass) override {
        table.set(faultId, minorType, moClass);
    }
    void configurationFile(const std::string&) override { FAIL(); }
    dolq::MappingTable table;
    std::size_t withoutClass = 0;
};

Texts called(const std::string& arguments) {
    return {"8 dolqXmlConfigurator|Call DOLQ with " + arguments};
}

TEST_F(MappingFileTest, GivesBothGenerationsTheSameEntries) {
    std::string deepest; // in a root
    for (int i = 1; i < 256; ++i) {
        deepest.insert(0, "<a>").append("</a>");
    }
    std::vector<MappingFile> rows{
        {deepest, {}, {}},
        {R"(<note faultid="1" minor_type_id="2"/><g><mapping faultid="1" minor_type_id="2"/></g>)",
         {},
         {}},
        {R"(<mapping faultid="101" minor_type_id="65538"/>)",
         {{101, "", 65538}},
         {"0 dolqXmlConfigurator|Alarm mapping entry is missing managed object class for fault '101'.",
          "8 dolqXmlConfigurator|Call DOLQ with faultid=101 and minor_type_id=65538"}},
        {R"(<mapping faultid="-1" minor_type_id="-2" managed_object_class="A"/>)",
         {{4294967295U, "A", 4294967294U}},
         called("faultid=-1,  minor_type_id=-2 and managed_object_class=A ")},
        {R"(<mapping faultid="12abc" minor_type_id="2" managed_object_class="A"/>)",
         {{12, "A", 2}},
         called("faultid=12,  minor_type_id=2 and managed_object_class=A ")},
        {R"(<mapping minor_type_id="2"/><mapping faultid="12"/><mapping faultid="1" minor_type_id="x7"/>
            <mapping faultid="" minor_type_id="3"/><mapping faultid="1" minor_type_id="2" managed_object_class="A"/>)",
         {{1, "A", 2}},
         {kSkipped, kSkipped, kSkipped, kSkipped,
          "8 dolqXmlConfigurator|Call DOLQ with faultid=1,  minor_type_id=2 and managed_object_class=A "}},
        {R"(<mapping faultid="1" minor_type_id="2" managed_object_class="A"/><mapping faultid="1" minor_type_id="3" managed_object_class="A"/>)",
         {{1, "A", 3}},
         {"8 dolqXmlConfigurator|Call DOLQ with faultid=1,  minor_type_id=2 and managed_object_class=A ",
          "8 dolqXmlConfigurator|Call DOLQ with faultid=1,  minor_type_id=3 and managed_object_class=A "}},
    };
    const std::pair<const char*, Texts> lists[] = {{" Po rt, Link", {"Link", "Port"}},
                                                   {"A,,B", {"", "A", "B"}},
                                                   {"A,", {"A"}},
                                                   {",A", {"", "A"}},
                                                   {"  ", {}},
                                                   {"\tA ", {"\tA"}}};
    for (const auto& [list, classes] : lists) {
        rows.push_back({R"(<mapping faultid="1" minor_type_id="2" managed_object_class=")" +
                            std::string(list) + "\"/>",
                        {},
                        called("faultid=1,  minor_type_id=2 and managed_object_class=" +
                               std::string(list) + ' ')});
        for (const std::string& moClass : classes) {
            rows.back().entries.emplace_back(1, moClass, 2);
        }
    }
    for (const MappingFile& row : rows) {
        SCOPED_TRACE(row.elements);
        const TemporaryFile file(std::string("<?xml version=\"1.0\"?><any>") + row.elements +
                                 "</any>");
        dolq::xmlconf::MappingXmlConfigurator configurator;
        Texts traces;
        for (const std::string& trace : row.traces) {
            traces.push_back(withFile(trace, file.path()));
        }
        dolq::MappingTable table;
        platform().events.clear();
        onStackOf(kDocumentedStackKib,
                  [&] { EXPECT_TRUE(configurator.readMappingFile(file.path(), table)); });
        EXPECT_EQ(entriesOf(table), row.entries);
        EXPECT_EQ(platform().events, traces);

        RecordingConfiguration configuration;
        platform().events.clear();
        EXPECT_TRUE(configurator.readMappingFile(file.path(), &configuration));
        EXPECT_EQ(entriesOf(configuration.table), row.entries);
        EXPECT_EQ(configuration.withoutClass, platform().traces(0).size());
        EXPECT_EQ(platform().events, traces);
    }
}

TEST_F(MappingFileTest, ABadFileIsTracedAndLeavesTheTableAlone) {
    constexpr char kElement[] =
        R"(<mapping faultid="1" minor_type_id="2" managed_object_class="A"/>)";
    std::string deep;
    std::string unclosed = "<m>";
    for (int i = 0; i < 50000; ++i) {
        deep += "<a><a>";
        unclosed += kElement;
    }
    const std::string texts[] = {"", std::string("<m>") + kElement + "<mapping faultid=", deep,
                                 unclosed, R"(<?xml version="1.0"?><!-- nothing -->)"};
    for (const std::string& text : texts) {
        const TemporaryFile file(text);
        dolq::xmlconf::MappingXmlConfigurator configurator;
        dolq::MappingTable table;
        platform().events.clear();
        EXPECT_FALSE(configurator.readMappingFile(file.path(), table)) << text.substr(0, 40);
        EXPECT_TRUE(table.blocks().empty());
        const char* const trace = &text == std::end(texts) - 1
                                      ? "XML data corrupt, no root element in file '<file>'"
                                      : "Could not load XML file '<file>'";
        EXPECT_EQ(platform().events,
                  Texts{withFile(std::string("4 dolqXmlConfigurator|") + trace, file.path())});
    }
}

class DiscoveryTest : public LibraryTest {
protected:
    static constexpr char kMissing[] = "/nowhere/missing%s.xml";

    std::string element(const char* minorType) {
        return std::string(
                   R"(<m><mapping faultid="7" managed_object_class="Unit" minor_type_id=")") +
               minorType + "\"/></m>";
    }

    ScopedEnvironment m_number{"ZBN_NO", "CXC1"};
    ScopedEnvironment m_rev{"ZBN_REV", "R1A"};
    TemporaryFile m_first{element("65537")};
    TemporaryFile m_last{element("65538")};
};

TEST_F(DiscoveryTest, ReadsTheFilesOfTheLoadModuleInOrderAndGoesOnWithoutTheMissing) {
    const TemporaryFolder temporary;
    const std::string folder = temporary.path();
    platform().loadModules["central"] = {
        {"CXC1", "R1B", {{"alarm_mapping", m_first.path()}}},
        {"CXC2", "R1A", {{"alarm_mapping", m_first.path()}}},
        {"CXC1", "R1A", {{"alarm_mapping", m_first.path()}, {"alarm_mapping", kMissing}}}};
    platform().loadModuleErrors["local"] = -7;
    platform().loadModules["dynamic"] = {{"CXC1",
                                          "R1A",
                                          {{"ALARM_MAPPING", m_first.path()},
                                           {"alarm_mapping.xml", m_first.path()},
                                           {"alarm_mapping", folder},
                                           {"alarm_mapping", m_last.path()}}}};
    const auto client = v2::getFmiFactory()->createFaultManagement();

    Texts events(platform().events.begin(), platform().events.begin() + 19);
    const auto found = [&](const std::string& path) {
        return "8 dolqXmlConfigurator|Found fault id to minor type mapping file '" + path +
               "' in Load Module: CXC1, Rev:R1A, ThreadId: " + pid();
    };
    const auto notLoaded = [&](const std::string& path) {
        return "4 dolqXmlConfigurator|Could not load XML file '" + path + '\'';
    };
    const std::string mapped = "8 dolqXmlConfigurator|Call DOLQ with faultid=7,  minor_type_id=";
    EXPECT_EQ(events, (Texts{"getDefaultTraceObject", "registerTraceObject prefix.ruxaDolqXmlLU",
                             "Velk_get_lms central", found(m_first.path()), found(kMissing),
                             "Velk_free_buffers", "Velk_get_lms local",
                             "0 dolqXmlConfigurator|Got error code -7 from VELK, continuing anyway",
                             "Velk_get_lms dynamic", found(folder), found(m_last.path()),
                             "Velk_free_buffers", mapped + "65537 and managed_object_class=Unit ",
                             notLoaded(kMissing), notLoaded(folder),
                             mapped + "65538 and managed_object_class=Unit ",
                             "deregisterTraceObject prefix.ruxaDolqXmlLU", "getDefaultTraceObject",
                             "registerTraceObject prefix.DolqTraceLU"}));
    client->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(sentAlarm().minorId, 2U);      // the last file read wins
    adapter({})->ceaseAlarm(kObject, 7, ""); // of the other generation
    EXPECT_EQ(sentAlarm().minorId, 2U);
}

TEST_F(DiscoveryTest, WithoutAnIdentityOnlyAModuleWithoutOneMatches) {
    const ScopedEnvironment number("ZBN_NO", nullptr);
    const ScopedEnvironment rev("ZBN_REV", nullptr);
    platform().loadModules["central"] = {{"CXC1", "R1A", {{"alarm_mapping", m_first.path()}}}};
    v1::getFmiFactory();
    EXPECT_EQ(
        platform().traces(8).back(),
        "dolqXmlConfigurator|No alarm mapping file found in Load Module: , Rev: , ThreadId = " +
            pid());
    v1::freeFmiFactory();
    platform().loadModules["central"] = {{"any", "", {{"alarm_mapping", m_first.path()}}}};
    platform().nullTextsInLoadModules = true; // counts as empty
    const auto client = adapter({});
    client->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(platform().sent.size(), 1U);
}

} // namespace
