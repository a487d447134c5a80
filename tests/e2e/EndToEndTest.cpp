// Clients of the built library, each in a process of its own, on the embedded platform. Whatever
// they raise is read back from the notification log.

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "support/EmbeddedNode.h"

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;

constexpr char kBoard[] = "System=1,Board=3";

class EndToEndTest : public EmbeddedNode {
protected:
    /// Runs `client` in a new process as the given load module of the examples.
    void run(const std::function<void()>& client, const char* productNumber = "CXC1370001",
             const char* revision = "R1A") {
        const auto live = [&] {
            setenv("ZBN_NO", productNumber, 1);
            setenv("ZBN_REV", revision, 1);
            setenv("VELK_MANIFEST_DIR", DOLQ_EXAMPLES "/loadmodules", 1);
            setenv("RUXA_TRACE_GROUPS", "0,4", 1);
            setenv("SYSTEM_UUID", "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90", 1);
            setenv("COMPUTE_NAME", "compute-1", 1);
            client();
            std::exit(HasFailure() ? 1 : 0);
        };
        EXPECT_EQ(statusOf(start(live)), 0);
    }

    bool traced(const std::string& text) const {
        const auto lines = linesOf(m_trace);
        return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.find(text) != std::string::npos;
        });
    }

    static std::string value(const platform::ntf::Element& element) {
        return element.value.value_or("no text");
    }
};

TEST_F(EndToEndTest, AlarmsOfBothGenerationsArriveAsTheMappingFilesSay) {
    run([] {
        namespace fm = ruxa::fm;
        const auto v2 = fm::dolq::v2::getFmiFactory()->createFaultManagement();
        v2->raisePrimaryAlarm(kBoard, 4101, "board", "Fan stopped", {"", "fan 2"},
                              fm::fmi::v1::PerceivedSeverityMajor, 77U, "", "",
                              fm::fmi::v1::ProgramGroupLrat);
        v2->ceaseAlarm("System=1,Port=1", 4102, "port"); // the later file overrides the first
        v2->ceaseAlarm("System=1,Port=1", 4199, "unknown");
        std::unique_ptr<FaultManagementI> v1(
            fm::dolq::v1::getFmiFactory()->createFaultManagement());
        fm::dolq::v1::getFmiFactory()->getConfiguration()->setMapping(4199, 0x10063, "Port");
        v1->raiseAlarm("System=1,Port=1", 4199, "mine", "", {}, 9, 0, {77, 78});
        v1.reset();
        fm::dolq::v1::freeFmiFactory();
    });
    const auto records = received();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0]->notificationObject, kBoard);
    EXPECT_EQ(records[0]->perceivedSeverity, 4U);
    EXPECT_EQ(records[0]->majorId, 1U);
    EXPECT_EQ(records[0]->minorId, 1U);
    EXPECT_EQ(records[0]->additionalText, "Fan stopped");
    ASSERT_EQ(records[0]->additionalInfo.size(), 2U);
    EXPECT_EQ(value(records[0]->additionalInfo[1]), "fan 2");
    ASSERT_EQ(records[0]->proposedRepairActions.size(), 1U);
    EXPECT_EQ(value(records[0]->proposedRepairActions[0]), "lratPgGrp");
    EXPECT_EQ(records[1]->perceivedSeverity, 0U);
    EXPECT_EQ(records[1]->minorId, 17U);
    EXPECT_EQ(records[2]->minorId, 0x63U);
    EXPECT_EQ(records[2]->perceivedSeverity, 1U);
    // One system derives one UUID for one event, in whatever form it is sent.
    const std::string primary = value(records[0]->additionalInfo[0]);
    const std::string uuid = primary.substr(primary.rfind(": \"") + 3, 36);
    EXPECT_EQ(
        value(records[2]->additionalInfo[0]).find(R"("S": [")" + uuid + R"(",")"),
        std::string(R"(CI={"C": [{"I": "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90","n": "compute-1"}],)")
            .size());
    EXPECT_TRUE(traced("Minor type not found. notificationObject:System=1,Port=1, faultId:4199"));
}

TEST_F(EndToEndTest, AnAlarmThatTheServiceCannotTakeIsTraced) {
    run([] {
        const auto client = ruxa::fm::dolq::v2::getFmiFactory()->createFaultManagement();
        const auto raise = [&](const std::string& object, const std::string& text,
                               const std::vector<std::string>& info) {
            client->raisePrimaryAlarm(object, 4101, "", text, info, 0, 1U, "", "");
        };
        raise(kBoard, "", {std::string(40000, 'x')});     // beyond the service's variable data
        raise(kBoard, std::string("a\0b", 3), {});        // the service counts up to the NUL
        raise(kBoard, "%s%n\xFF", {"%s%n\xFF\n\x1B[2J"}); // hostile, yet fine
        raise(std::string(1 << 20, '\n') + ",Board=3", "", {}); // cut to what a name can hold
    });
    EXPECT_TRUE(traced("Populate Alarm:  errorCode:f"));
    EXPECT_TRUE(traced("Send Alarm:  errorCode:7"));
    EXPECT_TRUE(traced("Alarm field cut: field:notificationObject, length:1048584, sent:599"));
    const auto records = received();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0]->additionalText, "%s%n\xEF\xBF\xBD"); // U+FFFD: it is no UTF-8
    EXPECT_EQ(value(records[0]->additionalInfo[1]), "%s%n\xEF\xBF\xBD\n\x1B[2J");
    EXPECT_EQ(records[1]->notificationObject, std::string(599, '\n'));
}

} // namespace
