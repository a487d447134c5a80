#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <thread>

#include <pthread.h>
#include <sys/mman.h>

#include "ResidentSize.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "support/EmbeddedNode.h"

namespace {

namespace v1 = ruxa::fm::dolq::v1;

#ifdef __OPTIMIZE__
constexpr bool kOptimised = true;
#else
constexpr bool kOptimised = false;
#endif

/// A tenth of the load is as much as a sanitizer does in the same time.
constexpr int scaled(int count) { return kSanitized ? count / 10 : count; }

/// One thread's client. Each alarm says who raised it, and as which of its alarms.
class Client {
public:
    Client() {
        v1::getFmiFactory()->getConfiguration()->setMapping(7, 0x10002, "Alarm");
        m_adapter.reset(v1::getFmiFactory()->createFaultManagement());
    }
    ~Client() {
        m_adapter.reset();
        v1::freeFmiFactory();
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    static constexpr char kText[] = "a text that a torn line would not hold whole";

    void raise(unsigned client, unsigned alarm) {
        m_adapter->raisePrimaryAlarm(
            "Client=" + std::to_string(client) + ",Alarm=" + std::to_string(alarm), 7, "fault",
            kText, {"first entry", "second entry"}, 2, std::string("uuid"), "system", "compute", 3);
    }

    static void raiseUntil(const std::atomic<bool>& stop) {
        Client client;
        for (unsigned alarm = 1; !stop; ++alarm) {
            client.raise(1, alarm);
            pthread_testcancel();
        }
    }

private:
    std::unique_ptr<ruxa::fm::fmi::v1::FaultManagementI> m_adapter;
};

class LoadTest : public EmbeddedNode {
protected:
    /// The alarms of each client in the log, none of them twice.
    std::map<unsigned, std::set<unsigned>> alarms() const {
        std::map<unsigned, std::set<unsigned>> logged;
        for (const auto& record : received()) {
            unsigned client = 0;
            unsigned alarm = 0;
            if (!record) {
                continue;
            }
            EXPECT_EQ(std::sscanf(record->notificationObject.c_str(), "Client=%u,Alarm=%u", &client,
                                  &alarm),
                      2);
            EXPECT_EQ(record->additionalText, Client::kText);
            EXPECT_EQ(record->additionalInfo.size(), 3U);
            EXPECT_TRUE(logged[client].insert(alarm).second) << record->notificationObject;
        }
        return logged;
    }
};

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

TEST_F(LoadTest, AKilledClientLosesItsLastAlarmAtMostAndDamagesNoOther) {
    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& progress = *new (shared) Progress{};
    const auto startWriter = [&](unsigned number) {
        return start([&, number] {
            Client client;
            Progress::Alarms& own = progress.clients[number];
            do {
                client.raise(number, ++own.begun);
                ++own.done;
            } while (!progress.stop);
        });
    };
    std::array<std::pair<pid_t, unsigned>, kWriters> writers;
    for (unsigned number = 0; number < kWriters; ++number) {
        writers[number] = {startWriter(number), number};
    }
    for (unsigned kill = 0; kill < kKills; ++kill) {
        auto& [process, number] = writers[kill % kWriters];
        while (progress.clients[number].done < 20 + kill) {
            usleep(100);
        }
        ::kill(process, SIGKILL);
        EXPECT_EQ(statusOf(process), SIGKILL);
        number = kWriters + kill;
        process = startWriter(number);
    }
    progress.stop = true;
    for (const auto& writer : writers) {
        EXPECT_EQ(statusOf(writer.first), 0);
    }
    // The last one killed may have left half a line, too, behind which the next alarm begins.
    EXPECT_EQ(statusOf(startWriter(kWriters + kKills)), 0);

    const auto records = received();
    const auto halves = std::count(records.begin(), records.end(), std::nullopt);
    std::printf("%u killed, %ld half lines skipped\n", kKills, static_cast<long>(halves));
    EXPECT_LE(halves, static_cast<long>(kKills));
    auto logged = alarms();
    for (unsigned number = 0; number < progress.clients.size(); ++number) {
        const unsigned begun = progress.clients[number].begun;
        const unsigned done = progress.clients[number].done;
        const auto count = static_cast<unsigned>(logged[number].size());
        EXPECT_TRUE(done <= count && count <= begun && begun <= done + 1) << number;
        EXPECT_TRUE(count == 0 || *logged[number].rbegin() == count) << number; // none in between
    }
    munmap(shared, sizeof(Progress));
}

TEST_F(LoadTest, MemoryStaysAsItIsOverManyAlarms) {
    if (kSanitized) {
        GTEST_SKIP() << "a sanitizer keeps freed memory";
    }
    setenv("RUXA_NTF_LOG", "/dev/null", 1);
    EXPECT_EQ(statusOf(start([] {
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

TEST_F(LoadTest, MainReturnsWhileThreadsRaiseAlarms) {
    for (int run = 0; run < scaled(100) && !HasFailure(); ++run) {
        const auto live = [run] {
            for (int thread = 0; thread < 6; ++thread) {
                std::thread([] { Client::raiseUntil(false); }).detach();
            }
            usleep(static_cast<useconds_t>(2000 + 100 * run));
            std::exit(0);
        };
        EXPECT_EQ(statusOf(start(live)), 0) << run;
    }
}

TEST_F(LoadTest, AForkedChildRaisesAlarmsOfItsOwnWhileThreadsRaiseTheirs) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a forked child may inherit a locked mutex of its runtime's allocator";
#endif
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&stop] { Client::raiseUntil(stop); });
    }
    for (int child = 0; child < scaled(220) && !HasFailure(); ++child) {
        std::filesystem::remove(m_log); // or a sanitizer's slow forks make it too long to be read
        EXPECT_EQ(statusOf(start([] {
                      alarm(60); // which ends a child that hangs
                      Client().raise(2, 1);
                  })),
                  0)
            << child;
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto records = received();
    EXPECT_FALSE(records.empty());
    EXPECT_EQ(std::count(records.begin(), records.end(), std::nullopt), 0);
}

TEST_F(LoadTest, AThreadIsCancelledWhileItRaisesAlarms) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the runtimes lose track of a cancelled thread's stack and of its mutexes";
#endif
    for (const char* faults : {"", "send:OK,delay=1", "allocate:TRY_AGAIN,times=100000"}) {
        std::filesystem::remove(m_log);
        const auto live = [faults] {
            setenv("RUXA_NTF_FAULTS", faults, 1);
            for (int run = 0; run < 20; ++run) {
                std::vector<std::thread> threads;
                for (int thread = 0; thread < 3; ++thread) {
                    threads.emplace_back([] { Client::raiseUntil(false); });
                }
                usleep(static_cast<useconds_t>(1000 * run));
                for (std::thread& thread : threads) {
                    pthread_cancel(thread.native_handle());
                    thread.join();
                }
            }
        };
        EXPECT_EQ(statusOf(start(live)), 0) << faults;
    }
}

} // namespace
