#include <algorithm>
#include <cstdio>

#include "LibraryTest.h"

namespace {

constexpr int kBusyAnswers = 5000;

/// One call of the service and what the library owes when it is refused.
struct ServiceCall {
    const char* name;
    const char* message; // the failure trace, without the code
    int frees;           // calls of free for the one alarm
    std::size_t sent;
};

const ServiceCall kCalls[] = {
    {"initialize", "Initialize Session: errorCode:", 0, 0},
    {"allocate", "Allocate Alarm:  errorCode:", 0, 0},
    {"value", "Populate Alarm:  errorCode:", 1, 0},
    {"send", "Send Alarm:  errorCode:", 1, 0},
    {"free", "Free Alarm:  errorCode:", 1, 1},
    {"finalize", "Finalize Session: errorCode:", 1, 1},
};

class ServiceErrorTest : public LibraryTest, public testing::WithParamInterface<ServiceCall> {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        platform().enabledGroups = {0};
        v1::getFmiFactory()->getConfiguration()->setMapping(7, 1, "Unit");
    }

    /// A whole client's life with one alarm, which has one value.
    void liveWithOneAlarm() {
        platform().events.clear();
        platform().sent.clear();
        const std::unique_ptr<FaultManagementI> client(
            v1::getFmiFactory()->createFaultManagement());
        raise(*client);
    }

    static long count(const std::string& event) {
        return std::count(platform().events.begin(), platform().events.end(), event);
    }
};

TEST_P(ServiceErrorTest, EveryCodeLeavesItsTraceAndOneFree) {
    for (int code = SA_AIS_ERR_LIBRARY; code <= SA_AIS_ERR_DEPLOYMENT; ++code) {
        if (code == SA_AIS_ERR_TRY_AGAIN) {
            continue;
        }
        SCOPED_TRACE(code);
        platform().results[GetParam().name] = {static_cast<SaAisErrorT>(code)};
        liveWithOneAlarm();
        char digits[8];
        std::snprintf(digits, sizeof(digits), "%x", static_cast<unsigned>(code));
        Texts traces{std::string("dolqNtfSessionImpl|") + GetParam().message + digits};
        if (GetParam().name == std::string("initialize")) {
            traces.emplace_back("dolqNtfSessionImpl|Finalize Session: errorCode:9");
        }
        EXPECT_EQ(platform().traces(0), traces);
        EXPECT_EQ(count("free"), GetParam().frees);
        EXPECT_EQ(platform().sent.size(), GetParam().sent);
        EXPECT_EQ(platform().openNotifications, 0);
    }
}

TEST_P(ServiceErrorTest, ALongBusyServiceIsWaitedForInSilence) {
    platform().results[GetParam().name].assign(kBusyAnswers, SA_AIS_ERR_TRY_AGAIN);
    liveWithOneAlarm();
    EXPECT_EQ(count("usleep 100000"), kBusyAnswers);
    EXPECT_EQ(platform().traces(0), Texts{});
    EXPECT_EQ(platform().sent.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(, ServiceErrorTest, testing::ValuesIn(kCalls),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
