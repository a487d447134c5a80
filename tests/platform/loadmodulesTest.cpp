#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "Velk.h"
#include "support/FailingMalloc.h"
#include "support/SetUserId.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;

std::string module(const std::string& content) {
    return "<loadModules><loadModule productNumber='a' revision='b'>" + content +
           "</loadModule></loadModules>";
}

/// A manifest directory of its own for each test.
class LoadModules : public testing::Test {
protected:
    void write(const std::string& file, const std::string& content) const {
        std::ofstream(m_directory / file) << content;
    }

    static int query(std::string category, Velk_lm_list& list) {
        return Velk_get_lms(nullptr, category.data(), &list);
    }

    /// The list as one text: "name|product|revision|tag=path,..;" for each module.
    static std::string contentOf(const std::string& category) {
        Velk_lm_list list{};
        const int result = query(category, list);
        std::string text = result == VELK_OK ? "" : "error " + std::to_string(result);
        for (unsigned long i = 0; i < list.count; ++i) {
            const Velk_lm& module = list.lms[i];
            text += std::string(module.name) + "|" + module.productNumber + "|" + module.revision;
            for (unsigned long j = 0; j < module.fileCount; ++j) {
                text += std::string("|") + module.files[j].tag + "=" + module.files[j].path;
            }
            text += ";";
        }
        Velk_free_buffers(&list);
        EXPECT_EQ(list.count, 0U);
        EXPECT_EQ(list.lms, nullptr);
        return text;
    }

    const TemporaryFolder m_folder;
    const fs::path& m_directory = m_folder.path();
    const ScopedEnvironment m_variable{"VELK_MANIFEST_DIR", m_directory.c_str()};
};

TEST_F(LoadModules, EachCategoryIsReadAnewFromItsManifest) {
    write("central.xml",
          "<?xml version=\"1.0\"?><!-- c --><loadModules>"
          "<loadModule name='App' productNumber='CXC1' revision='R1A'>"
          "<file tag='alarm_mapping' path='maps/a.xml'/><file tag='other' path='/etc/b.xml'/>"
          "</loadModule><loadModule productNumber='' revision=''/></loadModules>");
    write("dynamic.xml", "<loadModules/>");
    EXPECT_EQ(contentOf("central"), "App|CXC1|R1A|alarm_mapping=" + m_directory.string() +
                                        "/maps/a.xml|other=/etc/b.xml;||;");
    EXPECT_EQ(contentOf("local"), "");
    EXPECT_EQ(contentOf("dynamic"), "");
    write("dynamic.xml",
          "<loadModules><loadModule productNumber='P&amp;Q' revision='2'/></loadModules>");
    EXPECT_EQ(contentOf("dynamic"), "|P&Q|2;");
}

TEST_F(LoadModules, AnAbsentDirectoryIsEmptyAndWhatIsNoFileIsUnreadable) {
    fs::create_directory(m_directory / "central.xml");
    fs::create_symlink("local.xml", m_directory / "local.xml");
    write("dynamic.xml", "");
    EXPECT_EQ(contentOf("central"), "error " + std::to_string(VELK_UNREADABLE_MANIFEST));
    EXPECT_EQ(contentOf("local"), "error " + std::to_string(VELK_UNREADABLE_MANIFEST));
    const ScopedEnvironment file("VELK_MANIFEST_DIR", (m_directory / "dynamic.xml").c_str());
    EXPECT_EQ(contentOf("dynamic"), "error " + std::to_string(VELK_UNREADABLE_MANIFEST));
    const ScopedEnvironment absent("VELK_MANIFEST_DIR", (m_directory / "absent").c_str());
    EXPECT_EQ(contentOf("central"), "");
}

TEST_F(LoadModules, AManifestOfMoreThanSixteenMebibytesIsRefused) {
    const std::string manifest = "<loadModules/>";
    const std::size_t limit = 16U << 20;
    write("central.xml", manifest + std::string(limit - manifest.size(), ' '));
    EXPECT_EQ(contentOf("central"), "");
    write("central.xml", manifest + std::string(limit + 1 - manifest.size(), ' '));
    EXPECT_EQ(contentOf("central"), "error " + std::to_string(VELK_MALFORMED_MANIFEST));
}

TEST_F(LoadModules, WrongArgumentsLeaveAnEmptyList) {
    Velk_lm_list list{7, reinterpret_cast<const Velk_lm*>(&list)};
    EXPECT_EQ(Velk_get_lms(nullptr, nullptr, &list), VELK_BAD_ARGUMENT);
    EXPECT_EQ(list.lms, nullptr);
    for (const char* category : {"", "Central", "central ", "central.xml", "../central"}) {
        EXPECT_EQ(query(category, list), VELK_UNKNOWN_CATEGORY) << category;
    }
    char central[] = "central";
    EXPECT_EQ(Velk_get_lms(nullptr, central, nullptr), VELK_BAD_ARGUMENT);
    Velk_free_buffers(&list);
    Velk_free_buffers(nullptr);
}

TEST_F(LoadModules, NobodyChoosesThemForASetUserIdProgram) {
    write("local.xml", module(""));
    runsWithOthersRights = true;
    EXPECT_EQ(contentOf("local"), "");
    runsWithOthersRights = false;
}

TEST_F(LoadModules, OneFailedMallocHasItsOwnCodeAndLeavesNothing) {
    write("local.xml", module("<file tag='t' path='p'/>"));
    Velk_lm_list list{};
    int position = 1;
    int result = VELK_OK;
    while (withFailingMalloc(position, [&] { result = query("local", list); })) {
        EXPECT_EQ(result, VELK_NO_MEMORY) << position;
        EXPECT_EQ(list.lms, nullptr);
        ++position;
    }
    EXPECT_GT(position, 10);
    Velk_free_buffers(&list);
}

TEST_F(LoadModules, AMalformedManifestHasItsOwnCodeAndLeavesNothing) {
    std::string deep;
    for (int i = 0; i < 1000000; ++i) {
        deep += "<a>";
    }
    const std::pair<const char*, std::string> rows[] = {
        {"Empty", ""},
        {"NoElement", "<?xml version='1.0'?><!-- nothing -->"},
        {"Truncated", "<loadModules><loadModule productNumber='a' revis"},
        {"NotClosed", "<loadModules>"},
        {"NestedTooDeep", deep},
        {"WrongRoot", "<loadmodules/>"},
        {"TwoRoots", "<loadModules/><loadModules/>"},
        {"TextBehindRoot", "<loadModules/>text"},
        {"NulBehindRoot", std::string("<loadModules/>\0", 15)},
        {"UnknownElement", "<loadModules><module productNumber='a' revision='b'/></loadModules>"},
        {"NoProductNumber", "<loadModules><loadModule revision='b'/></loadModules>"},
        {"NoRevision", "<loadModules><loadModule productNumber='a'/></loadModules>"},
        {"UnknownFileElement", module("<mapping tag='t' path='p'/>")},
        {"FileWithoutTag", module("<file tag='t' path='p'/><file path='p'/>")},
        {"FileWithoutPath", module("<file tag='t'/>")},
        {"FileWithEmptyPath", module("<file tag='t' path=''/>")},
    };
    for (const auto& [name, manifest] : rows) {
        write("local.xml", manifest);
        EXPECT_EQ(contentOf("local"), "error " + std::to_string(VELK_MALFORMED_MANIFEST)) << name;
    }
}

} // namespace
