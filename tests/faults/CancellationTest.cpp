// Threads that are cancelled (pthread_cancel) inside the library. Wherever that happens, the thread
// alone ends: what it held is given back, and alarms of others pass.

#include <functional>
#include <stdexcept>

#include <pthread.h>

#include "LibraryTest.h"
#include "common/RegularFile.h"

namespace {

class CancellationTest : public LibraryTest {
protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "the runtime loses track of a cancelled thread's stack";
#endif
        LibraryTest::SetUp();
    }
};

/// Whether a thread of its own that does `work` is cancelled, if only behind it.
bool isCancelledIn(const std::function<void()>& work) {
    return onStackOf(1024, [&work] {
               work();
               pthread_testcancel(); // the application's own next one
           }) == PTHREAD_CANCELED;
}

void cancelHere() {
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

TEST_F(CancellationTest, EndsTheThreadAndGivesEverythingBack) {
    const struct {
        const char* where; // the function of the platform in which the thread is cancelled
        const char* busy;  // the call that the service is first too busy for
        std::size_t sent;
    } rows[] = {
        {"usleep", "initialize", 0},
        {"usleep", "allocate", 0},
        {"usleep", "value", 0},
        {"usleep", "send", 0},
        {"usleep", "free", 1},
        {"usleep", "finalize", 1},
        {"initialize", "", 1},
        {"allocate", "", 1},
        {"value", "", 1},
        {"send", "", 1},
        {"finalize", "", 1},
        {"formatStr", "", 0},
        {"registerTraceObject", "", 0},
        {"deregisterTraceObject", "", 1},
    };
    v1::FmiFactory* const factory = v1::getFmiFactory();
    factory->getConfiguration()->setMapping(7, 1, "Unit");
    for (const auto& [where, busy, sent] : rows) {
        SCOPED_TRACE(where + std::string(" ") + busy);
        platform().sent.clear();
        platform().results[busy].assign(1, SA_AIS_ERR_TRY_AGAIN);
        platform().onCall[where] = cancelHere;
        EXPECT_TRUE(isCancelledIn([factory] {
            const std::unique_ptr<FaultManagementI> client(factory->createFaultManagement());
            client->raisePrimaryAlarm(kObject, 7, "fault", "text", {}, 0, std::string("uuid"), "s",
                                      "c", 1);
        }));
        EXPECT_EQ(platform().sent.size(), sent);
        EXPECT_TRUE(platform().sessions.empty());
        EXPECT_EQ(platform().openNotifications, 0);
        EXPECT_EQ(platform().traceObjects.size(), 1U); // the table's

        platform().onCall.clear();
        raise(*adapter());
        EXPECT_EQ(platform().sent.size(), 1U);
    }
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

} // namespace
