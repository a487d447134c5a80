// Threads that are cancelled (pthread_cancel) inside the library. Wherever that happens, the thread
// alone ends: what it held is given back, and alarms of others pass.

#include <functional>
#include <stdexcept>

#include <pthread.h>

#include "LibraryTest.h"
#include "common/RegularFile.h"

namespace {

struct Cancellation {
    const char* name;
    const char* where; // the function of the platform in which the thread is cancelled
    const char* busy;  // the call that the service is first too busy for
    std::size_t sent;
};

class CancellationTest : public LibraryTest, public testing::WithParamInterface<Cancellation> {
protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the runtime loses track of a cancelled thread's stack";
#endif
        LibraryTest::SetUp();
    }
};

/// Whether a thread of its own that does `work` is cancelled, if only behind it.
bool isCancelledIn(std::function<void()> work) {
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        pthread_testcancel(); // the application's own next one
        return nullptr;
    };
    pthread_t thread{};
    EXPECT_EQ(pthread_create(&thread, nullptr, run, &work), 0);
    void* result = nullptr;
    EXPECT_EQ(pthread_join(thread, &result), 0);
    return result == PTHREAD_CANCELED;
}

void cancelHere() {
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

TEST_P(CancellationTest, EndsTheThreadAndGivesEverythingBack) {
    v1::FmiFactory* const factory = v1::getFmiFactory();
    factory->getConfiguration()->setMapping(7, 1, "Unit");
    platform().results[GetParam().busy].assign(1, SA_AIS_ERR_TRY_AGAIN);
    platform().onCall[GetParam().where] = cancelHere;
    EXPECT_TRUE(isCancelledIn([factory] {
        const std::unique_ptr<FaultManagementI> client(factory->createFaultManagement());
        client->raisePrimaryAlarm("Top=1,Unit=7", 7, "fault", "text", {}, 0, std::string("uuid"),
                                  "s", "c", 1);
    }));
    EXPECT_EQ(platform().sent.size(), GetParam().sent);
    EXPECT_TRUE(platform().sessions.empty());
    EXPECT_EQ(platform().openNotifications, 0);
    EXPECT_EQ(platform().traceObjects.size(), 1U); // the table's

    platform().onCall.clear();
    platform().sent.clear();
    raise(*adapter());
    EXPECT_EQ(platform().sent.size(), 1U);
}

TEST_F(CancellationTest, AnAlarmThatFailsIsFreedBeforeTheThreadEnds) {
    const auto client = adapter();
    platform().onCall["send"] = [] { throw std::runtime_error("service"); };
    platform().results["free"].assign(1, SA_AIS_ERR_TRY_AGAIN);
    platform().onCall["usleep"] = cancelHere;
    EXPECT_TRUE(isCancelledIn([&] { EXPECT_THROW(raise(*client), std::runtime_error); }));
    EXPECT_EQ(platform().openNotifications, 0);
}

TEST_F(CancellationTest, AFactoryIsMadeWholeBeforeTheThreadEnds) {
    platform().onCall["formatStr"] = cancelHere;
    int made = 0;
    EXPECT_TRUE(isCancelledIn([&made] {
        made += v1::getFmiFactory() != nullptr ? 1 : 0;
        v1::freeFmiFactory();
        made += v2::getFmiFactory() != nullptr ? 1 : 0;
        v2::freeFmiFactory();
    }));
    EXPECT_EQ(made, 2);
}

/// A file is read outside of a factory, too: closing it is no place where a thread may end.
TEST_F(CancellationTest, AFileIsClosedBeforeTheThreadEnds) {
    const TemporaryFile file("text");
    platform().onCall["read"] = [] { pthread_cancel(pthread_self()); };
    EXPECT_TRUE(isCancelledIn([&file] {
        std::string content;
        common::readRegularFile(file.path(), 4, content);
    }));
}

INSTANTIATE_TEST_SUITE_P(, CancellationTest,
                         testing::ValuesIn(std::vector<Cancellation>{
                             {"WaitingToOpen", "usleep", "initialize", 0},
                             {"WaitingToAllocate", "usleep", "allocate", 0},
                             {"WaitingForAValue", "usleep", "value", 0},
                             {"WaitingToSend", "usleep", "send", 0},
                             {"WaitingToFree", "usleep", "free", 1},
                             {"WaitingToClose", "usleep", "finalize", 1},
                             {"Opening", "initialize", "", 1},
                             {"Allocating", "allocate", "", 1},
                             {"Filling", "value", "", 1},
                             {"Sending", "send", "", 1},
                             {"Closing", "finalize", "", 1},
                             {"Tracing", "formatStr", "", 0},
                             {"Registering", "registerTraceObject", "", 0},
                             {"Deregistering", "deregisterTraceObject", "", 1},
                         }),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
