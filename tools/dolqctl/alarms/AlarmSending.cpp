#include "alarms/AlarmSending.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <system_error>
#include <vector>

#include <ruxa/fm/dolq/v2/FmiFactory.h>
#include <saNtf.h>
#include <sys/mman.h>
#include <syslog.h>
#include <unistd.h>

#include "Library.h"
#include "Options.h"
#include "common/AisNames.h"
#include "common/Environment.h"

namespace {

/// What the notification service answered to the latest alarm that this process sent. The traces
/// tell the reason, but not the outcome: several failure traces go with alarms that are sent all
/// the same, and a platform's own trace backend keeps them to itself.
std::optional<SaAisErrorT> latestAnswer;

} // namespace

/// A program's function takes precedence over a library's of the same name, so the library's calls
/// to the service come through here.
[[gnu::visibility("default")]] SaAisErrorT
saNtfNotificationSend(SaNtfNotificationHandleT notificationHandle) {
    static auto* const send =
        dolqctl::Library(dolqctl::kNtfLibrary)
            .function<SaAisErrorT(SaNtfNotificationHandleT)>("saNtfNotificationSend");
    latestAnswer = send(notificationHandle);
    return *latestAnswer;
}

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;

constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
constexpr char kFileScheme[] = "file:";

/// Collects what the embedded trace backend records in this process. That reads its environment
/// once, so the capture begins before the first use of the library. A backend with settings of its
/// own writes elsewhere, and then there are no lines.
class TraceCapture {
public:
    /// Failures and the flow of calls; `details`: those, too.
    explicit TraceCapture(bool details)
        : m_sinkBefore(common::environment(kSinkVariable)),
          m_file(memfd_create("dolqctl-traces", MFD_CLOEXEC)),
          m_path("/proc/self/fd/" + std::to_string(m_file)) {
        if (m_file < 0) {
            throw std::system_error(errno, std::generic_category(),
                                    "no memory file for the traces");
        }
        setenv(kSinkVariable, (kFileScheme + m_path).c_str(), 1);
        setenv("RUXA_TRACE_GROUPS", details ? "0,4,8" : "0,4", 1);
    }
    ~TraceCapture() { ::close(m_file); }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    std::vector<std::string> lines() const {
        std::ifstream file(m_path); // opened anew: read from its beginning
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    /// Gives the lines to the file or to syslog, where RUXA_TRACE_SINK asked for one: who collects
    /// traces there misses none of this process's.
    void passOn(const std::vector<std::string>& lines) const {
        if (m_sinkBefore.rfind(kFileScheme, 0) == 0) {
            const std::string path = m_sinkBefore.substr(sizeof(kFileScheme) - 1);
            std::ofstream file(path, std::ios::app);
            for (const std::string& line : lines) {
                file << line + '\n';
            }
            if (!file.flush()) {
                tell("the traces could not be written to " + printable(path) + ", see " +
                     kSinkVariable);
            }
        } else if (m_sinkBefore == "syslog") {
            for (const std::string& line : lines) {
                syslog(LOG_USER | LOG_INFO, "%s", line.c_str());
            }
        }
    }

private:
    const std::string m_sinkBefore;
    const int m_file;
    const std::string m_path;
};

std::string outcome() {
    if (!latestAnswer) {
        return "not sent: the library dropped the alarm, the traces say why";
    }
    return *latestAnswer == SA_AIS_OK
               ? "sent"
               : "not sent: the notification service answered " + common::aisText(*latestAnswer);
}

} // namespace

void addAlarmOptions(Options& options, AlarmArguments& arguments) {
    options
        .value("--object", "DN", arguments.object,
               "Notification object, e.g. managedElement=1,Board=3")
        .required();
    options.id("--fault", arguments.faultId, "Fault id").required();
    options.flag("--verbose", arguments.verbose, "Show the traces of group 8 (details), too");
}

int sendAlarm(const AlarmArguments& arguments, Output& output,
              const std::function<void(FaultManagementI&)>& operation) {
    const TraceCapture capture(arguments.verbose);
    using namespace ruxa::fm::dolq::v2;
    Library library(kDolqLibrary);
    auto* const getFactory =
        library.function<FmiFactory*()>("_ZN4ruxa2fm4dolq2v213getFmiFactoryEv");
    auto* const freeFactory = library.function<void()>("_ZN4ruxa2fm4dolq2v214freeFmiFactoryEv");
    operation(*getFactory()->createFaultManagement());
    freeFactory(); // all of the library goes before the traces are read
    const std::vector<std::string> traces = capture.lines();
    capture.passOn(traces);
    const bool sent = latestAnswer == SA_AIS_OK;
    if (traces.empty()) {
        tell("this platform's trace backend has no sink of this process's own: "
             "look for the traces where it keeps them");
    }
    for (const std::string& trace : traces) {
        std::cerr << trace << '\n';
    }
    output.line(output.styled(sent ? Style::Good : Style::Bad, outcome()));
    return sent ? kFine : kFindings;
}

} // namespace dolqctl
