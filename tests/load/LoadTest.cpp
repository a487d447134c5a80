#include <thread>

#include "EmbeddedNode.h"
#include "ResidentSize.h"

namespace {

using LoadTest = EmbeddedNode;

TEST_F(LoadTest, ProcessesAndThreadsAtOnceLoseNothing) {
    constexpr unsigned kProcesses = 4;
    constexpr unsigned kThreads = 8;
    constexpr unsigned kClients = kProcesses * kThreads;
    constexpr unsigned kAlarmsEach = scaled(100'000) / kClients;
    std::vector<pid_t> processes;
    for (unsigned process = 0; process < kProcesses; ++process) {
        processes.push_back(start([process] {
            std::vector<std::thread> threads;
            for (unsigned thread = 0; thread < kThreads; ++thread) {
                threads.emplace_back([number = process * kThreads + thread] {
                    Client client;
                    for (unsigned alarm = 0; alarm < kAlarmsEach; ++alarm) {
                        client.raise(number, alarm + 1);
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        }));
    }
    for (const pid_t process : processes) {
        EXPECT_EQ(exitStatus(process), 0);
    }
    std::vector<std::vector<unsigned>> seen(kClients, std::vector<unsigned>(kAlarmsEach));
    std::ifstream log(m_log);
    unsigned blank = 0;
    for (std::string line; std::getline(log, line);) {
        if (line.empty()) { // two had seen a third one in the middle of its line
            ++blank;
            continue;
        }
        const Origin origin = originOf(line);
        ASSERT_TRUE(origin.alarm != 0 && origin.client < kClients && origin.alarm <= kAlarmsEach)
            << line;
        ++seen[origin.client][origin.alarm - 1];
    }
    std::printf("blank lines: %u\n", blank);
    const std::vector<std::vector<unsigned>> once(kClients, std::vector<unsigned>(kAlarmsEach, 1));
    EXPECT_TRUE(seen == once);
    EXPECT_EQ(linesOf(m_trace).size(), 0U);
}

TEST_F(LoadTest, MemoryStaysAsItIsOverManyAlarms) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer keeps freed memory";
    }
    setenv("RUXA_NTF_LOG", "/dev/null", 1);
    EXPECT_EQ(exitStatus(start([] {
                  constexpr unsigned kAlarms = kOptimised ? 1'000'000 : 100'000;
                  Client client;
                  for (unsigned alarm = 0; alarm < 1000; ++alarm) {
                      client.raise(1, alarm);
                  }
                  const long before = residentKiB();
                  for (unsigned alarm = 0; alarm < kAlarms; ++alarm) {
                      client.raise(1, alarm);
                  }
                  const long after = residentKiB();
                  std::printf("resident KiB: %ld before, %ld after\n", before, after);
                  EXPECT_LE(after - before, 128);
              })),
              0);
}

} // namespace
