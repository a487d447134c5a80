#include <array>
#include <atomic>
#include <csignal>
#include <map>
#include <new>
#include <set>

#include <sys/mman.h>

#include "EmbeddedNode.h"

namespace {

constexpr unsigned kWriters = 8;
constexpr unsigned kKills = 24;

/// Shared by the processes: how far each client is.
struct Progress {
    struct Alarms {
        std::atomic<unsigned> begun;
        std::atomic<unsigned> done;
    };
    std::array<Alarms, kWriters + kKills + 1> clients;
    std::atomic<bool> stop;
};

using KilledClientTest = EmbeddedNode;

TEST_F(KilledClientTest, LosesItsLastAlarmAtMostAndDamagesNoOther) {
    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& progress = *new (shared) Progress{};
    const auto startWriter = [&](unsigned number) {
        return start([&, number] {
            Client client;
            Progress::Alarms& alarms = progress.clients[number];
            while (!progress.stop) {
                client.raise(number, ++alarms.begun);
                ++alarms.done;
            }
        });
    };
    std::vector<std::pair<pid_t, unsigned>> writers;
    for (unsigned number = 0; number < kWriters; ++number) {
        writers.emplace_back(startWriter(number), number);
    }
    for (unsigned kill = 0; kill < kKills; ++kill) {
        auto& [process, number] = writers[kill % kWriters];
        while (progress.clients[number].done < 20 + kill) {
            usleep(100);
        }
        ::kill(process, SIGKILL);
        EXPECT_EQ(exitStatus(process), SIGKILL);
        number = kWriters + kill;
        process = startWriter(number);
    }
    progress.stop = true;
    for (const auto& writer : writers) {
        EXPECT_EQ(exitStatus(writer.first), 0);
    }
    // The last one killed may have left half a line, too, behind which the next alarm begins.
    progress.clients[kWriters + kKills].begun = 1;
    EXPECT_EQ(exitStatus(start([&] {
                  Client().raise(kWriters + kKills, 1);
                  progress.clients[kWriters + kKills].done = 1;
              })),
              0);

    std::map<unsigned, std::set<unsigned>> logged;
    unsigned halves = 0;
    for (const std::string& line : linesOf(m_log)) {
        const Origin origin = originOf(line);
        if (origin.alarm == 0) {
            halves += line.empty() ? 0 : 1;
            continue;
        }
        EXPECT_TRUE(logged[origin.client].insert(origin.alarm).second) << line;
    }
    std::printf("%u killed, %u half lines skipped\n", kKills, halves);
    EXPECT_LE(halves, kKills);
    for (unsigned number = 0; number < progress.clients.size(); ++number) {
        const unsigned begun = progress.clients[number].begun;
        const unsigned done = progress.clients[number].done;
        const auto count = static_cast<unsigned>(logged[number].size());
        EXPECT_TRUE(done <= count && count <= begun && begun <= done + 1) << number;
        EXPECT_TRUE(count == 0 || *logged[number].rbegin() == count) << number; // none in between
    }
    munmap(shared, sizeof(Progress));
}

} // namespace
