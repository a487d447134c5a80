// `raise` and `cease`: through the library, as an application would. What arrived is what the
// notification service gives afterwards and did not give before.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <type_traits>

#include <ruxa/fm/dolq/v2/FmiFactory.h>

#include "Commands.h"
#include "Output.h"
#include "alarms/AlarmReader.h"
#include "common/AlarmNames.h"
#include "common/Escape.h"

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// What tells it from others on its object, as every service gives it back: none replaces or cuts
/// anything in here.
std::string likenessOf(const Notification& notification) {
    constexpr std::size_t kSurelySent = 1000; // bytes of a text
    std::vector<std::string> texts = {notification.object, notification.text};
    for (std::size_t i = 1; i < notification.info.size(); ++i) { // behind the correlation info
        texts.push_back(notification.info[i].text.value_or(""));
    }
    std::string all =
        std::to_string(notification.classId.vendorId) + ' ' + std::to_string(notification.severity);
    for (const std::string& text : texts) {
        all += common::jsonString(text).substr(0, kSurelySent);
    }
    return all;
}

/// Prints what became of the alarm and what to do next.
int conclude(int exitCode, const std::string& text, const std::string& next) {
    printLine(text);
    printLine("Next: " + next);
    if (!std::cout.flush()) {
        tell(text);
    }
    return exitCode;
}

/// Gives what the service has to `take`, or returns why it cannot be read. Throws GivenUp.
std::string readInto(AlarmReader& reader, const std::function<void(Notification&&)>& take) {
    try {
        reader.read([] {}, take);
        return {};
    } catch (const GivenUp&) {
        throw;
    } catch (const CommandError& error) {
        return error.what();
    }
}

/// "alarm 2/17 (major) on "Shelf=1,Port=3", notification 7, after 0.4 ms"
std::string arrivalText(const Notification& arrived, const std::string& object, Milliseconds took) {
    std::ostringstream text;
    text << "alarm " << arrived.classId.majorId << '/' << arrived.classId.minorId << " ("
         << common::nameOf(arrived.severity, common::kSeverityNames) << ") on " << object
         << ", notification " << arrived.id << ", after " << std::fixed << std::setprecision(1)
         << took.count() << " ms";
    return text.str();
}

/// Calls `operation` on an adapter of the library, as an application would, and looks whether what
/// is `expected` arrived; `next` leads to the cause when it did not.
int send(const Arguments& arguments, Notification expected, const std::string& next,
         const std::function<void(FaultManagementI&)>& operation) {
    using namespace ruxa::fm::dolq::v2;
    const bool isTracedHere =
        std::getenv("RUXA_TRACE_GROUPS") == nullptr && std::getenv("RUXA_TRACE_SINK") == nullptr;
    setenv("RUXA_TRACE_GROUPS", "0,4", 0); // before the trace backend reads it
    SharedObject library(kDolqLibrary);
    auto* const getFactory = library.function<FmiFactory*()>(kGetFactory);
    auto* const freeFactory = library.function<void()>("_ZN4ruxa2fm4dolq2v214freeFmiFactoryEv");

    const std::string object = arguments.object.substr(0, kLongestObject);
    expected.object = object;
    expected.classId.vendorId = DOLQCTL_VENDOR_ID;
    const std::string on = nameText(arguments.object);
    const std::string unknown = "Handed over; whether it arrived is unknown: ";
    std::string unheard = "Not handed over: "; // when the user gives up
    Waiting::heedSignals();
    Waiting waiting;
    try {
        AlarmReader reader(waiting, object);
        std::string problem = readInto(reader, [](Notification&&) {});
        unheard = unknown;
        const auto took = std::make_shared<Milliseconds>();
        waiting.call("the library", [=] {
            auto adapter = getFactory()->createFaultManagement();
            const auto start = std::chrono::steady_clock::now();
            operation(*adapter);
            *took = std::chrono::steady_clock::now() - start;
            adapter.reset();
            freeFactory();
            return SA_AIS_OK;
        });
        std::optional<Notification> arrived;
        if (problem.empty()) {
            problem = readInto(reader, [&](Notification&& notification) {
                if (!arrived && likenessOf(notification) == likenessOf(expected)) {
                    arrived = std::move(notification);
                }
            });
        }
        if (!problem.empty()) {
            return conclude(kError, unknown + problem, "dolqctl doctor");
        }
        if (arrived) {
            return conclude(kFine, "Arrived: " + arrivalText(*arrived, on, *took),
                            "dolqctl alarms");
        }
        return conclude(kFindings,
                        "Not arrived: so far the service has no notification of it on " + on +
                            (isTracedHere ? "; the traces above say why"
                                          : "; the library's traces of group 0 say why"),
                        next);
    } catch (const GivenUp& error) {
        conclude(kError, unheard + error.what(), "dolqctl doctor, then dolqctl alarms");
        if (error.signal != 0) { // the shell sees what ended it
            std::signal(error.signal, SIG_DFL);
            ::raise(error.signal);
        }
        return kError;
    }
}

constexpr char kExplanation[] =
    "dolqctl explain with the same --object, --fault, --product and --revision; if that finds "
    "nothing, look up the traces' errorCode in troubleshooting.md";

} // namespace

int runRaise(const Arguments& arguments) {
    const bool hasSystem = !arguments.systemUuid.empty();
    const bool hasComputer = !arguments.computeName.empty();
    const auto& ids = arguments.eventIds;
    const bool isUncaused =
        ids.size() > 1 && std::all_of(ids.begin(), ids.end(), [](auto id) { return id == 0; });
    const std::string next = hasSystem != hasComputer
                                 ? "give both --system-uuid and --compute-name, or neither"
                             : isUncaused ? "give an --event-id other than 0"
                                          : kExplanation;
    Notification expected;
    expected.severity = common::codeOf(arguments.severity, common::kSeverityNames);
    expected.text = arguments.text;
    expected.info.emplace_back();
    for (const std::string& text : arguments.info) {
        expected.info.push_back({0, SA_NTF_VALUE_STRING, text});
    }
    return send(arguments, expected, next, [=](FaultManagementI& alarms) {
        const std::uint32_t severity =
            common::codeOf(arguments.severity, common::kClientSeverityNames);
        const std::uint32_t group =
            common::codeOf(arguments.programGroup, common::kProgramGroupNames);
        const auto raiseFor = [&](const auto& events) {
            using Event = typename std::decay_t<decltype(events)>::value_type;
            if (events.size() > 1) {
                alarms.raiseSecondaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                           arguments.info, severity, arguments.systemUuid,
                                           arguments.computeName, events, group);
            } else {
                alarms.raisePrimaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                         arguments.info, severity,
                                         events.empty() ? Event() : events.front(),
                                         arguments.systemUuid, arguments.computeName, group);
            }
        };
        arguments.eventUuids.empty() ? raiseFor(arguments.eventIds)
                                     : raiseFor(arguments.eventUuids);
    });
}

int runCease(const Arguments& arguments) {
    return send(arguments, {}, kExplanation, [=](FaultManagementI& alarms) {
        alarms.ceaseAlarm(arguments.object, arguments.faultId, {});
    });
}

} // namespace dolqctl
