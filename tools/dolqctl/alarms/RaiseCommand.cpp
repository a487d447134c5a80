// `raise` and `cease`: through the library, as an application would.
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "Options.h"
#include "alarms/AlarmSending.h"
#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;

constexpr char kRaiseFooter[] =
    R"(An event that is given once makes a primary alarm, which may also be without any; events that are
given more than once make a secondary alarm.

The traces of the call go to standard error, and also to where RUXA_TRACE_SINK says. Exit code 1:
nothing was sent.

Example:
  dolqctl raise --object managedElement=1,Board=3 --fault 4101 --severity major \
      --text 'Temperature too high' --event-id 4711)";

constexpr char kCeaseFooter[] =
    R"(The traces of the call go to standard error, and also to where RUXA_TRACE_SINK says. Exit code 1:
nothing was sent. It takes no alarm to be active.

Example:
  dolqctl cease --object managedElement=1,Board=3 --fault 4101)";

struct RaiseArguments {
    AlarmArguments alarm;
    std::string text;
    std::vector<std::string> info;
    std::optional<std::uint32_t> severity;
    std::optional<std::uint32_t> programGroup;
    std::string systemUuid;
    std::string computeName;
    std::vector<std::uint32_t> eventIds;
    std::vector<std::string> eventUuids;
};

/// Calls the operation: with `group...` the form that has a program group, without it the other.
template <typename Event, typename... Group>
void raise(FaultManagementI& alarms, const RaiseArguments& arguments,
           const std::vector<Event>& events, std::uint32_t severity, Group... group) {
    const AlarmArguments& alarm = arguments.alarm;
    if (events.size() > 1) {
        alarms.raiseSecondaryAlarm(alarm.object, alarm.faultId, {}, arguments.text, arguments.info,
                                   severity, arguments.systemUuid, arguments.computeName, events,
                                   group...);
    } else {
        alarms.raisePrimaryAlarm(alarm.object, alarm.faultId, {}, arguments.text, arguments.info,
                                 severity, events.empty() ? Event() : events.front(),
                                 arguments.systemUuid, arguments.computeName, group...);
    }
}

template <typename... Group>
int raise(const RaiseArguments& arguments, Output& output, std::uint32_t severity, Group... group) {
    return sendAlarm(arguments.alarm, output, [&](FaultManagementI& alarms) {
        if (arguments.eventUuids.empty()) {
            raise(alarms, arguments, arguments.eventIds, severity, group...);
        } else {
            raise(alarms, arguments, arguments.eventUuids, severity, group...);
        }
    });
}

int run(const RaiseArguments& arguments, Output& output) {
    return arguments.programGroup
               ? raise(arguments, output, *arguments.severity, *arguments.programGroup)
               : raise(arguments, output, *arguments.severity);
}

} // namespace

void addRaiseCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<RaiseArguments>();
    Options options =
        commandLine.add("raise", "Raise an alarm through the library", kRaiseFooter,
                        [arguments](Output& output) { return run(*arguments, output); });
    addAlarmOptions(options, arguments->alarm);
    options
        .choice("--severity",
                {std::begin(common::kClientSeverityNames), std::end(common::kClientSeverityNames)},
                arguments->severity, "How severe it is")
        .required();
    options.value("--text", "TEXT", arguments->text, "Additional text");
    options.value("--info", "TEXT", arguments->info,
                  "An entry of additional information; repeatable");
    options.choice("--program-group",
                   {std::begin(common::kProgramGroupNames), std::end(common::kProgramGroupNames)},
                   arguments->programGroup, "The program group that it concerns");
    const auto eventIds =
        options.id("--event-id", arguments->eventIds, "The event that caused it; repeatable");
    options
        .value("--uuid", "UUID", arguments->eventUuids,
               "The correlation UUID of the event that caused it; repeatable")
        .excludes(eventIds);
    options.value("--system-uuid", "UUID", arguments->systemUuid,
                  "The reporting system; by default the environment's SYSTEM_UUID");
    options.value("--compute-name", "NAME", arguments->computeName,
                  "The reporting computer; by default the environment's COMPUTE_NAME");
}

void addCeaseCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<AlarmArguments>();
    Options options = commandLine.add(
        "cease", "Cease an alarm through the library", kCeaseFooter, [arguments](Output& output) {
            return sendAlarm(*arguments, output, [&](FaultManagementI& alarms) {
                alarms.ceaseAlarm(arguments->object, arguments->faultId, {});
            });
        });
    addAlarmOptions(options, *arguments);
}

} // namespace dolqctl
