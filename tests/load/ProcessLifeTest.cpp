#include <atomic>
#include <thread>

#include <pthread.h>

#include "EmbeddedNode.h"

namespace {

/// What a process may do while its threads raise alarms.
class ProcessLifeTest : public EmbeddedNode {
protected:
    static void raiseUntil(const std::atomic<bool>& stop) {
        Client client;
        for (unsigned alarm = 1; !stop; ++alarm) {
            client.raise(1, alarm);
            pthread_testcancel();
        }
    }

    /// The log has whole notifications of clients alone.
    void expectWholeLines() const {
        unsigned whole = 0;
        for (const std::string& line : linesOf(m_log)) {
            const bool isWhole = originOf(line).alarm != 0;
            EXPECT_TRUE(isWhole || line.empty()) << line;
            whole += isWhole ? 1 : 0;
        }
        EXPECT_GT(whole, 0U);
    }
};

TEST_F(ProcessLifeTest, MainReturnsWhileThreadsRaiseAlarms) {
    constexpr int kRuns = scaled(100);
    for (int run = 0; run < kRuns && !HasFailure(); ++run) {
        const pid_t process = fork();
        if (process == 0) {
            for (int thread = 0; thread < 6; ++thread) {
                std::thread([] {
                    const std::atomic<bool> stop{false};
                    raiseUntil(stop);
                }).detach();
            }
            usleep(static_cast<useconds_t>(2000 + 100 * run));
            std::exit(0);
        }
        EXPECT_EQ(exitStatus(process), 0) << run;
    }
}

TEST_F(ProcessLifeTest, AForkedChildRaisesAlarmsOfItsOwnWhileThreadsRaiseTheirs) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a forked child may inherit a locked mutex of its runtime's allocator";
#endif
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&stop] { raiseUntil(stop); });
    }
    constexpr int kChildren = scaled(220);
    for (int child = 0; child < kChildren && !HasFailure(); ++child) {
        std::filesystem::remove(m_log); // or a sanitizer's slow forks make it too long to be read
        EXPECT_EQ(exitStatus(start([] {
                      alarm(60); // which ends a child that hangs
                      Client client;
                      client.raise(2, 1);
                  })),
                  0)
            << child;
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    expectWholeLines();
}

TEST_F(ProcessLifeTest, AThreadIsCancelledWhileItRaisesAlarms) {
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
                    threads.emplace_back([] {
                        const std::atomic<bool> stop{false};
                        raiseUntil(stop);
                    });
                }
                usleep(static_cast<useconds_t>(1000 * run));
                for (std::thread& thread : threads) {
                    pthread_cancel(thread.native_handle());
                    thread.join();
                }
            }
        };
        EXPECT_EQ(exitStatus(start(live)), 0) << faults;
    }
}

} // namespace
