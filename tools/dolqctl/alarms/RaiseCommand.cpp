// `raise` and `cease`: through the library, as an application would. What arrived is what the
// notification service gives afterwards and did not give before.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include <ruxa/fm/dolq/v2/FmiFactory.h>

#include "Commands.h"
#include "Discovery.h"
#include "MappingFiles.h"
#include "Ntf.h"
#include "Output.h"
#include "adapter/MinorType.h"
#include "adapter/MoClass.h"
#include "alarms/AlarmReader.h"
#include "common/AlarmNames.h"
#include "common/Escape.h"

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// What became of a call, and what to do next.
struct Outcome {
    int exitCode = kError;
    std::string text;
    std::string next;
};

/// What tells it from others, as every service gives it back: none replaces or cuts anything here.
std::string likenessOf(const Notification& notification) {
    constexpr std::size_t kSurelySent = 1000; // bytes of a text
    return classText(notification.classId) + ' ' + std::to_string(notification.severity) +
           common::jsonString(notification.object) +
           common::jsonString(notification.content["text"].get<std::string>())
               .substr(0, kSurelySent);
}

/// "Arrived: alarm 2/17 (major) on "Shelf=1,Port=3", notification 7, after 0.4 ms"
std::string arrivalText(const Notification& arrived, const std::string& object, Milliseconds took) {
    std::ostringstream text;
    text << "Arrived: alarm " << classText(arrived.classId) << " ("
         << common::nameOf(arrived.severity, common::kSeverityNames) << ") on " << object
         << ", notification " << arrived.id << ", after " << std::fixed << std::setprecision(1)
         << took.count() << " ms";
    return text.str();
}

constexpr char kUnknown[] = "Handed over; whether it arrived is unknown: ";

/// A call of the library, which may be left behind.
// NOLINTNEXTLINE(bugprone-exception-escape): without memory a document ends the process
struct Attempt {
    std::function<Milliseconds()> call;
    Notification expected;
    std::string object; ///< for people
    Outcome missing;    ///< when it did not arrive
    std::atomic<bool> isHandedOver = false;

    /// Inside `await`: looks before and after the call what the service has.
    Outcome run() {
        AlarmReader reader(expected.object);
        std::optional<Notification> arrived;
        std::string problem;
        const auto read = [&](const std::function<void(Notification&&)>& take) {
            try {
                reader.read([] {}, take);
            } catch (const CommandError& error) {
                problem = error.what();
            }
        };
        read([](Notification&&) {});
        isHandedOver = true;
        Milliseconds took{};
        ask("the library", [&] {
            took = call();
            return SA_AIS_OK;
        });
        if (problem.empty()) {
            read([&](Notification&& notification) {
                if (!arrived && likenessOf(notification) == likenessOf(expected)) {
                    arrived = std::move(notification);
                }
            });
        }
        return !problem.empty() ? Outcome{kError, kUnknown + problem,
                                          "dolqctl doctor; if that finds nothing, the service's "
                                          "messages above and its own log"}
               : arrived ? Outcome{kFine, arrivalText(*arrived, object, took), "dolqctl alarms"}
                         : missing;
    }
};

/// Calls `operation` on an adapter of the library, as an application would, and prints what became
/// of the alarm.
int send(const Arguments& arguments, const std::function<void(FaultManagementI&)>& operation) {
    using namespace ruxa::fm::dolq::v2;
    const bool isTracedHere =
        std::getenv("RUXA_TRACE_GROUPS") == nullptr && std::getenv("RUXA_TRACE_SINK") == nullptr;
    setenv("RUXA_TRACE_GROUPS", "0,4", 0); // before the trace backend reads it
    SharedObject library(kDolqLibrary);
    auto* const getFactory = library.function<FmiFactory*()>(kGetFactory);
    auto* const freeFactory = library.function<void()>("_ZN4ruxa2fm4dolq2v214freeFmiFactoryEv");

    const auto attempt = std::make_shared<Attempt>();
    attempt->call = [=] {
        auto adapter = getFactory()->createFaultManagement();
        const auto start = std::chrono::steady_clock::now();
        operation(*adapter);
        const Milliseconds took = std::chrono::steady_clock::now() - start;
        adapter.reset();
        freeFactory();
        return took;
    };
    attempt->expected.object = arguments.object.substr(0, kLongestObject);
    const Mappings mappings = readMappingFiles(discover().mappingFiles).mappings;
    const std::string moClass = dolq::parseMoClass(arguments.object).name;
    if (const auto used = mappings.find({arguments.faultId, moClass}); used != mappings.end()) {
        const std::uint32_t minorType = used->second.back().minorType;
        attempt->expected.classId = {DOLQCTL_VENDOR_ID,
                                     static_cast<SaUint16T>(dolq::majorIdOf(minorType)),
                                     static_cast<SaUint16T>(dolq::minorIdOf(minorType))};
    }
    if (!arguments.severity.empty()) { // otherwise it is a cease
        attempt->expected.severity = common::codeOf(arguments.severity, common::kSeverityNames);
    }
    attempt->expected.content["text"] = arguments.text;
    attempt->object = nameText(arguments.object);
    attempt->missing = {kFindings,
                        "Not arrived: so far the service has no notification of it on " +
                            attempt->object +
                            (isTracedHere ? "; the traces above say why"
                                          : "; the library's traces of group 0 say why"),
                        "dolqctl explain with the same --object, --fault, --product and "
                        "--revision; if that finds nothing, look up the traces' errorCode in "
                        "troubleshooting.md"};
    heedSignals();
    Outcome outcome;
    int signal = 0;
    try {
        outcome = await([attempt] { return attempt->run(); });
    } catch (const GivenUp& error) {
        outcome = {kError,
                   (attempt->isHandedOver ? kUnknown : "Not handed over: ") +
                       std::string(error.what()),
                   "dolqctl doctor, then dolqctl alarms"};
        signal = error.signal;
    }
    printLine(outcome.text);
    printLine("Next: " + outcome.next);
    if (!std::cout.flush()) {
        tell(outcome.text);
    }
    if (signal != 0) { // the shell sees what ended it
        std::signal(signal, SIG_DFL);
        ::raise(signal);
    }
    return outcome.exitCode;
}

template <typename Event>
void raise(FaultManagementI& alarms, const Arguments& arguments, const std::vector<Event>& events) {
    const auto severity = common::codeOf(arguments.severity, common::kClientSeverityNames);
    const auto group = common::codeOf(arguments.programGroup, common::kProgramGroupNames);
    if (events.size() > 1) {
        alarms.raiseSecondaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                   arguments.info, severity, arguments.systemUuid,
                                   arguments.computeName, events, group);
    } else {
        alarms.raisePrimaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                 arguments.info, severity,
                                 events.empty() ? Event() : events.front(), arguments.systemUuid,
                                 arguments.computeName, group);
    }
}

} // namespace

int runRaise(const Arguments& arguments) {
    return send(arguments, [=](FaultManagementI& alarms) {
        arguments.eventUuids.empty() ? raise(alarms, arguments, arguments.eventIds)
                                     : raise(alarms, arguments, arguments.eventUuids);
    });
}

int runCease(const Arguments& arguments) {
    return send(arguments, [=](FaultManagementI& alarms) {
        alarms.ceaseAlarm(arguments.object, arguments.faultId, {});
    });
}

} // namespace dolqctl
