// Threads that are cancelled (pthread_cancel) inside the library. Wherever that happens, the thread
// alone ends: what it held is given back, and alarms of others pass.

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

void* raiseOneAlarm(void* factory) {
    std::unique_ptr<FaultManagementI> client(
        static_cast<v1::FmiFactory*>(factory)->createFaultManagement());
    client->raisePrimaryAlarm("Top=1,Unit=7", 7, "fault", "text", {}, 0, std::string("uuid"), "s",
                              "c", 1);
    client.reset();
    pthread_testcancel(); // the application's own next one
    return nullptr;
}

TEST_P(CancellationTest, EndsTheThreadAndGivesEverythingBack) {
    v1::FmiFactory* const factory = v1::getFmiFactory();
    factory->getConfiguration()->setMapping(7, 1, "Unit");
    platform().results[GetParam().busy].assign(1, SA_AIS_ERR_TRY_AGAIN);
    platform().onCall[GetParam().where] = [] {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    };
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, nullptr, raiseOneAlarm, factory), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_EQ(platform().sent.size(), GetParam().sent);
    EXPECT_TRUE(platform().sessions.empty());
    EXPECT_EQ(platform().openNotifications, 0);
    EXPECT_EQ(platform().traceObjects.size(), 1U); // the table's

    platform().onCall.clear();
    platform().sent.clear();
    raise(*adapter());
    EXPECT_EQ(platform().sent.size(), 1U);
}

TEST_F(CancellationTest, AFactoryIsMadeWholeBeforeTheThreadEnds) {
    platform().onCall["formatStr"] = [] {
        pthread_cancel(pthread_self());
        pthread_testcancel();
    };
    int made = 0;
    pthread_t thread{};
    const auto getBoth = [](void* counter) -> void* {
        *static_cast<int*>(counter) += v1::getFmiFactory() != nullptr ? 1 : 0;
        v1::freeFmiFactory();
        *static_cast<int*>(counter) += v2::getFmiFactory() != nullptr ? 1 : 0;
        v2::freeFmiFactory();
        pthread_testcancel();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, getBoth, &made), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_EQ(made, 2);
}

/// A file is read outside of a factory, too: closing it is no place where a thread may end.
TEST_F(CancellationTest, AFileIsClosedBeforeTheThreadEnds) {
    const TemporaryFile file("text");
    platform().onCall["read"] = [] { pthread_cancel(pthread_self()); };
    pthread_t thread{};
    const auto readFile = [](void* path) -> void* {
        std::string content;
        common::readRegularFile(*static_cast<const std::string*>(path), 4, content);
        pthread_testcancel();
        return nullptr;
    };
    std::string path = file.path();
    ASSERT_EQ(pthread_create(&thread, nullptr, readFile, &path), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
}

INSTANTIATE_TEST_SUITE_P(, CancellationTest,
                         testing::ValuesIn(std::vector<Cancellation>{
                             {"WaitingToOpen", "usleep", "initialize", 0},
                             {"WaitingToAllocate", "usleep", "allocate", 0},
                             {"WaitingForAValue", "usleep", "value", 0},
                             {"WaitingToSend", "usleep", "send", 0},
                             {"WaitingToFree", "usleep", "free", 1},
                             {"WaitingToClose", "usleep", "finalize", 1},
                             {"Opening", "initialize", "", 0},
                             {"Allocating", "allocate", "", 1},
                             {"Sending", "send", "", 1},
                             {"Closing", "finalize", "", 1},
                             {"Tracing", "formatStr", "", 0},
                             {"Registering", "registerTraceObject", "", 0},
                             {"Deregistering", "deregisterTraceObject", "", 1},
                         }),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
