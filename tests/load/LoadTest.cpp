#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "support/TestSupport.h"

namespace {

namespace v1 = ruxa::fm::dolq::v1;

/// A tenth of the load is as much as a sanitizer does in the same time.
constexpr int scaled(int count) { return kSanitized ? count / 10 : count; }

/// One thread's client.
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

    void raise(const char* object = "Client=1,Alarm=1") {
        m_adapter->raisePrimaryAlarm(
            object, 7, "fault", "a text that a torn line would not hold whole",
            {"first entry", "second entry"}, 2, std::string("uuid"), "system", "compute", 3);
    }

    static void raiseUntil(const std::atomic<bool>& stop) {
        for (Client client; !stop;) {
            client.raise();
        }
    }

private:
    std::unique_ptr<ruxa::fm::fmi::v1::FaultManagementI> m_adapter;
};

/// A folder with a notification log and traces of its own. Each process reads the environment anew.
class LoadTest : public testing::Test {
protected:
    LoadTest() {
        setenv("RUXA_NTF_LOG", m_log.c_str(), 1);
        setenv("RUXA_TRACE_SINK", ("file:" + m_traces.string()).c_str(), 1);
        setenv("VELK_MANIFEST_DIR", m_folder.path().c_str(), 1); // which holds no manifest
    }

    /// The wait status of `process` in a process of its own: 0 when no expectation failed in it.
    template <typename Process> static int statusAfter(Process process) {
        const pid_t child = fork();
        if (child == 0) {
            process();
            std::fflush(nullptr);
            _exit(HasFailure() ? 1 : 0);
        }
        return statusOf(child);
    }

    const TemporaryFolder m_folder;
    const std::filesystem::path m_log = m_folder.path() / "log.jsonl";
    const std::filesystem::path m_traces = m_folder.path() / "traces";
};

TEST_F(LoadTest, MainReturnsWhileThreadsRaiseAlarms) {
    for (int run = 0; run < scaled(100) && !HasFailure(); ++run) {
        const auto live = [run] {
            for (int thread = 0; thread < 6; ++thread) {
                std::thread([] { Client::raiseUntil(false); }).detach();
            }
            usleep(static_cast<useconds_t>(2000 + 100 * run));
            std::exit(0);
        };
        EXPECT_EQ(statusAfter(live), 0) << run;
    }
}

TEST_F(LoadTest, AForkedChildRaisesAlarmsOfItsOwnWhileThreadsRaiseTheirs) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a forked child may inherit a locked mutex of its runtime's allocator";
#endif
    constexpr int kChildren = 220;
    setenv("RUXA_TRACE_GROUPS", "4", 1); // an entry, a lookup and the sending of each alarm
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&stop] { Client::raiseUntil(stop); });
    }
    for (int child = 0; child < kChildren && !HasFailure(); ++child) {
        EXPECT_EQ(statusAfter([] {
                      alarm(60); // which ends a child that hangs
                      Client().raise("Child=1,Alarm=1");
                  }),
                  0)
            << child;
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    int ofChildren = 0;
    std::set<std::string> ids;
    for (const std::string& line : linesOf(m_log)) {
        if (line.empty()) { // two had seen a third one in its middle
            continue;
        }
        const auto alarm = nlohmann::json::parse(line, nullptr, false);
        ASSERT_TRUE(alarm.is_object()) << line;
        EXPECT_TRUE(ids.insert(alarm.at("notificationId")).second) << "an id of two: " << line;
        ofChildren += alarm.at("notificationObject") == "Child=1,Alarm=1" ? 1 : 0;
    }
    EXPECT_EQ(ofChildren, kChildren);
    const std::regex whole("^[-0-9]{10}T[0-9:.]{15}Z [0-9]+ [0-9]+ \\S+ 4 dolq\\w+:[0-9]+ .{25,}");
    int tracesOfChildren = 0;
    for (const std::string& line : linesOf(m_traces)) {
        EXPECT_TRUE(line.empty() || std::regex_search(line, whole)) << line;
        tracesOfChildren += line.find("Object:Child=1,Alarm=1") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(tracesOfChildren, 3 * kChildren);
}

} // namespace
