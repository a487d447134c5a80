#include "common/AppendLine.h"

#include <cerrno>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "support/TestSupport.h"

namespace common {

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

class AppendLine : public testing::Test {
protected:
    // Nothing stays open.
    void TearDown() override { EXPECT_EQ(entriesIn("/proc/self/fd"), m_open); }

    const TemporaryFolder m_temporary;
    const fs::path& m_folder = m_temporary.path();
    const fs::path m_file = m_folder / "a/b/log";
    const std::size_t m_open = entriesIn("/proc/self/fd");
};

TEST_F(AppendLine, MakesFoldersAndFileForTheirOwnerEachTimeAnew) {
    const mode_t mask = umask(0);
    EXPECT_EQ(appendLine(m_file, "one\n"), 0);
    fs::rename(m_folder / "a", m_folder / "c");
    EXPECT_EQ(appendLine(m_file, "two\n"), 0);
    umask(mask);
    EXPECT_EQ(linesOf(m_file), Lines{"two"});
    EXPECT_EQ(fs::status(m_folder / "a").permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(m_folder / "a/b").permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(m_file).permissions(), fs::perms(0640));
}

TEST_F(AppendLine, FollowsALinkOnlyWhereNobodyElseCanMakeOne) {
    const struct {
        unsigned mode; // of the folder
        int result;
    } rows[] = {{0755, 0}, {0775, ELOOP}, {0757, ELOOP}, {01777, ELOOP}};
    fs::create_symlink(m_folder / "target", m_folder / "link");
    const fs::path before = fs::current_path();
    fs::current_path(m_folder);
    for (const auto& [mode, result] : rows) {
        fs::permissions(m_folder, fs::perms(mode));
        EXPECT_EQ(appendLine("link", "relative\n"), result) << mode;
        EXPECT_EQ(appendLine(m_folder / "link", "absolute\n"), result) << mode;
    }
    fs::current_path(before);
    EXPECT_EQ(linesOf(m_folder / "target"), (Lines{"relative", "absolute"}));
}

TEST_F(AppendLine, NamesWhatIsNoFileAndWaitsForNone) {
    ASSERT_EQ(mkfifo((m_folder / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(appendLine(m_folder / "fifo", "x\n"), EINVAL);
    EXPECT_EQ(appendLine("/dev/full", "x\n"), EINVAL);
    EXPECT_EQ(appendLine("/dev/null", "x\n"), 0);
    EXPECT_EQ(appendLine(m_folder, "x\n"), EISDIR);
    EXPECT_EQ(appendLine("", "x\n"), ENOENT);
}

TEST_F(AppendLine, EndsHalfALineOfAnotherAndTellsOfItsOwn) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const struct {
        const char* content;
        rlim_t limit;
        int result;
        Lines lines;
    } rows[] = {
        {"whole\n", 100, 0, {"whole", "line"}}, {"half", 100, 0, {"half", "line"}},
        {"half", 9, 0, {"half", "line"}}, // all but the newline
        {"half", 8, ENOSPC, {"half", "lin"}},   {"half", 4, EFBIG, {"half"}},
    };
    for (const auto& row : rows) {
        const fs::path file = m_folder / "log";
        std::ofstream(file) << row.content;
        const rlimit limit{row.limit, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const int result = appendLine(file, "line\n");
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(result, row.result) << row.content << row.limit;
        EXPECT_EQ(linesOf(file), row.lines);
    }
}

} // namespace
} // namespace common
