#include <algorithm>
#include <csignal>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include "EmbeddedNode.h"

namespace {

using FullDiskTest = EmbeddedNode;

constexpr rlim_t kSpace = 64 * 1024;

/// Makes `folder` a disk (tmpfs) that holds `kSpace` bytes; false where the process may not mount.
bool mountSmallDisk(const std::filesystem::path& folder) {
    std::filesystem::create_directory(folder);
    return (unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", folder.c_str(), "tmpfs", 0, ("size=" + std::to_string(kSpace)).c_str()) ==
               0;
}

void limitFileSize(rlim_t size) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = size;
    setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(FullDiskTest, AlarmsAreTracedAsLostUntilThereIsRoomAgain) {
    const std::filesystem::path disk = m_folder / "disk";
    const auto live = [&] {
        const bool mounted = mountSmallDisk(disk);
        std::printf("the small disk: %s\n", mounted ? "a tmpfs" : "a limit on the file size");
        setenv("RUXA_NTF_LOG", (disk / "log").c_str(), 1);
        if (mounted) {
            std::ofstream(disk / "filler") << std::string(kSpace / 2, '-');
        } else {
            limitFileSize(kSpace / 2);
        }
        Client client;
        constexpr unsigned kAlarms = 200; // more than fit
        for (unsigned alarm = 1; alarm <= kAlarms; ++alarm) {
            client.raise(1, alarm);
        }
        const auto full = linesOf(disk / "log");
        const auto whole =
            static_cast<std::size_t>(std::count_if(full.begin(), full.end(), [](const auto& line) {
                return platform::ntf::parseLine(line).has_value();
            }));
        EXPECT_GT(whole, 10U);
        EXPECT_GE(whole + 1, full.size()); // a torn tail
        const auto traces = linesOf(m_trace);
        EXPECT_EQ(std::count_if(traces.begin(), traces.end(),
                                [](const auto& line) {
                                    return line.find("Send Alarm:  errorCode:12") !=
                                           std::string::npos;
                                }),
                  static_cast<long>(kAlarms - whole));
        EXPECT_EQ(traces.size(), kAlarms - whole);

        if (mounted) {
            std::filesystem::remove(disk / "filler");
        } else {
            limitFileSize(RLIM_INFINITY);
        }
        client.raise(1, kAlarms + 1);
        const auto lines = linesOf(disk / "log");
        EXPECT_EQ(originOf(lines.back()).alarm, kAlarms + 1);
    };
    EXPECT_EQ(exitStatus(start(live)), 0);
}

TEST_F(FullDiskTest, ALogThatCannotBeWrittenIsTracedForEachAlarm) {
    const std::pair<std::string, const char*> rows[] = {{"/dev/full", "errorCode:2"},
                                                        {m_folder.string(), "errorCode:2"},
                                                        {"/dev/null/log", "errorCode:2"}};
    for (const auto& [path, code] : rows) {
        setenv("RUXA_NTF_LOG", path.c_str(), 1);
        std::filesystem::remove(m_trace);
        EXPECT_EQ(exitStatus(start([] {
                      Client client;
                      client.raise(1, 1);
                      client.raise(1, 2);
                  })),
                  0);
        const auto traces = linesOf(m_trace);
        EXPECT_EQ(traces.size(), 2U) << path;
        for (const std::string& trace : traces) {
            EXPECT_NE(trace.find(std::string("Send Alarm:  ") + code), std::string::npos) << trace;
        }
    }
}

} // namespace
