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

    /// What is said on stderr.
    std::string refusal(const std::string& category, const std::string& reason) const {
        return "velk: the manifest '" + (m_directory / category).string() +
               ".xml' is refused: " + reason + "\n";
    }

    const TemporaryFolder m_folder;
    fs::path m_directory = m_folder.path();
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
    runsWithOthersRights = true; // and who starts the program does not choose the folder
    EXPECT_EQ(contentOf("dynamic"), "");
    runsWithOthersRights = false;
}

TEST_F(LoadModules, WhatIsNoFileOrTooLargeIsRefusedAndAnAbsentDirectoryEmpty) {
    const std::string manifest = "<loadModules/>";
    const std::size_t limit = 16U << 20;
    write("central.xml", manifest + std::string(limit - manifest.size(), ' '));
    EXPECT_EQ(contentOf("central"), "");
    std::ofstream(m_directory / "central.xml", std::ios::app) << ' ';
    fs::create_directory(m_directory / "dynamic.xml");
    testing::internal::CaptureStderr();
    EXPECT_EQ(contentOf("central"), "error " + std::to_string(VELK_MALFORMED_MANIFEST));
    EXPECT_EQ(contentOf("dynamic"), "error " + std::to_string(VELK_UNREADABLE_MANIFEST));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              refusal("central", "it has more than 16 MiB") + refusal("dynamic", "Is a directory"));
    const ScopedEnvironment absent("VELK_MANIFEST_DIR", (m_directory / "absent").c_str());
    EXPECT_EQ(contentOf("central"), "");
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

TEST_F(LoadModules, ARefusedManifestLeavesNothingAndSaysWhyOnce) {
    std::string deep;
    for (int level = 0; level < 300; ++level) {
        deep += "<a>";
    }
    constexpr char kOneRoot[] = "it must hold one 'loadModules' and nothing behind it";
    const std::pair<std::string, std::string> rows[] = {
        {"", "Error document empty."},
        {"<?xml version='1.0'?><!-- nothing -->", kOneRoot},
        {"<loadModules><loadModule productNumber='a' revis", "line 1: Error reading Attributes."},
        {"<loadModules>\n<loadModule productNumber='a' revision='b'>",
         "Error reading Element value."},
        {deep, "too many levels of elements, or attributes of one"},
        {"\n<loadmodules/>", "line 2: 'loadmodules' where 'loadModules' is expected"},
        {"<loadModules/><loadModules/>", kOneRoot},
        {"<loadModules/>text", kOneRoot},
        {std::string("<loadModules/>\0", 15), "it holds a NUL byte"},
        {"<loadModules><a\xE2\x80\xAE/></loadModules>",
         R"(line 1: 'a\xE2\x80\xAE' where 'loadModule' is expected)"},
        {"<loadModules><loadModule revision='b'/></loadModules>",
         "line 1: no 'productNumber' in 'loadModule'"},
        {"<loadModules><loadModule productNumber='a'/></loadModules>",
         "line 1: no 'revision' in 'loadModule'"},
        {module("<mapping tag='t' path='p'/>"), "line 1: 'mapping' where 'file' is expected"},
        {module("<file tag='t' path='p'/>\n<file path='p'/>\n<file/>"),
         "line 2: no 'tag' in 'file'"},
        {module("<file tag='t' path=''/>"), "line 1: an empty 'path' in 'file'"},
    };
    for (const auto& [manifest, reason] : rows) {
        write("local.xml", manifest);
        testing::internal::CaptureStderr();
        EXPECT_EQ(contentOf("local"), "error " + std::to_string(VELK_MALFORMED_MANIFEST));
        EXPECT_EQ(contentOf("local"), "error " + std::to_string(VELK_MALFORMED_MANIFEST));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), refusal("local", reason));
        // The folder is another for the next one, which may have the same reason.
        m_directory += "/next";
        fs::create_directory(m_directory);
        setenv("VELK_MANIFEST_DIR", m_directory.c_str(), 1);
    }
}

} // namespace
