#include "RaiseCommand.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "AlarmSending.h"
#include "IdOption.h"
#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;

constexpr char kFooter[] =
    R"(Without a correlation option, or with --event-id or --event-uuid, it is a primary alarm; with
--correlated-event-id or --correlated-event-uuid, which may be repeated, a secondary one. With
--combined the library decides: secondary when the first --correlated-event-id is not 0, else
primary with --event-id; the system's identity then comes from the environment.

The traces of the call go to standard error, and also to where RUXA_TRACE_SINK says. Exit code 1:
nothing was sent.

Example:
  dolqctl raise --object managedElement=1,Board=3 --fault 4101 --severity major \
      --text 'Temperature too high' --event-id 4711)";

struct Options {
    AlarmOptions alarm;
    std::string text;
    std::vector<std::string> info;
    std::string severity;
    std::string programGroup;
    std::string systemUuid;
    std::string computeName;
    std::uint32_t eventId = 0;
    std::string eventUuid;
    std::vector<std::uint32_t> correlatedEventIds;
    std::vector<std::string> correlatedEventUuids;
    bool combined = false;
};

/// A code may be given as it is: also one that the library does not know.
template <typename Names>
std::uint32_t codeOf(const char* what, const std::string& value, const Names& names) {
    const auto* const name = std::find(std::begin(names), std::end(names), value);
    if (name != std::end(names)) {
        return static_cast<std::uint32_t>(name - std::begin(names));
    }
    std::uint32_t code = 0;
    const char* const end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, code);
    if (result.ec != std::errc{} || result.ptr != end) {
        std::string known;
        for (const char* const each : names) {
            known += std::string(each) + ", ";
        }
        throw CommandError(std::string("unknown ") + what + ' ' + inQuotes(value) +
                           ": choose from " + known + "or give a code");
    }
    return code;
}

/// Which operation the correlation options ask for.
enum class Kind { PrimaryId, PrimaryUuid, SecondaryIds, SecondaryUuids, Combined };

/// Calls the operation: with `group...` the form that has a program group, without it the other.
template <typename... Group>
void raise(FaultManagementI& alarms, const Options& options, Kind kind, std::uint32_t severity,
           Group... group) {
    const AlarmOptions& alarm = options.alarm;
    const auto with = [&](auto operation) {
        operation(alarm.object, alarm.faultId, alarm.faultIdName, options.text, options.info,
                  severity);
    };
    switch (kind) {
    case Kind::PrimaryId:
        with([&](const auto&... first) {
            alarms.raisePrimaryAlarm(first..., options.eventId, options.systemUuid,
                                     options.computeName, group...);
        });
        break;
    case Kind::PrimaryUuid:
        with([&](const auto&... first) {
            alarms.raisePrimaryAlarm(first..., options.eventUuid, options.systemUuid,
                                     options.computeName, group...);
        });
        break;
    case Kind::SecondaryIds:
        with([&](const auto&... first) {
            alarms.raiseSecondaryAlarm(first..., options.systemUuid, options.computeName,
                                       options.correlatedEventIds, group...);
        });
        break;
    case Kind::SecondaryUuids:
        with([&](const auto&... first) {
            alarms.raiseSecondaryAlarm(first..., options.systemUuid, options.computeName,
                                       options.correlatedEventUuids, group...);
        });
        break;
    case Kind::Combined:
        with([&](const auto&... first) {
            alarms.raiseAlarm(first..., options.eventId, options.correlatedEventIds, group...);
        });
        break;
    }
}

int run(const Options& options, Kind kind, Output& output) {
    const std::uint32_t severity =
        codeOf("severity", options.severity, common::kClientSeverityNames);
    const auto group = options.programGroup.empty() ? std::optional<std::uint32_t>()
                                                    : codeOf("program group", options.programGroup,
                                                             common::kProgramGroupNames);
    return sendAlarm(options.alarm, output, [&](FaultManagementI& alarms) {
        if (group) {
            raise(alarms, options, kind, severity, *group);
        } else {
            raise(alarms, options, kind, severity);
        }
    });
}

/// Options that go with no other operation exclude each other.
std::function<Kind()> addCorrelationOptions(CLI::App& command, Options& options) {
    auto* const id =
        command.add_option("--event-id", options.eventId, "The event that caused it, 0 for none");
    auto* const uuid = command.add_option("--event-uuid", options.eventUuid,
                                          "The correlation UUID of the event that caused it");
    auto* const ids = command.add_option("--correlated-event-id", options.correlatedEventIds,
                                         "An event that led to it; repeatable");
    auto* const uuids = command.add_option("--correlated-event-uuid", options.correlatedEventUuids,
                                           "A correlation UUID of such an event; repeatable");
    auto* const combined =
        command.add_flag("--combined", options.combined, "The library chooses the kind of alarm");
    auto* const systemUuid =
        command.add_option("--system-uuid", options.systemUuid,
                           "The reporting system; by default the environment's SYSTEM_UUID");
    auto* const computeName =
        command.add_option("--compute-name", options.computeName,
                           "The reporting computer; by default the environment's COMPUTE_NAME");
    id->check(checkId);
    ids->allow_extra_args(false)->check(checkId);
    uuids->allow_extra_args(false)->excludes(ids);
    uuid->excludes(id)->excludes(ids)->excludes(uuids);
    uuids->excludes(id);
    combined->excludes(uuid)->excludes(uuids)->excludes(systemUuid)->excludes(computeName);
    return [=, &options] {
        if (options.combined) {
            return Kind::Combined;
        }
        if (id->count() != 0 && ids->count() != 0) {
            throw CommandError("--event-id and --correlated-event-id go together only with "
                               "--combined\nTry 'dolqctl raise --help'.");
        }
        return ids->count() != 0     ? Kind::SecondaryIds
               : uuids->count() != 0 ? Kind::SecondaryUuids
               : uuid->count() != 0  ? Kind::PrimaryUuid
                                     : Kind::PrimaryId;
    };
}

} // namespace

void addRaiseCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("raise", "Raise an alarm through the library");
    const auto options = std::make_shared<Options>();
    addAlarmOptions(*command, options->alarm);
    command
        ->add_option("--severity", options->severity,
                     "warning, minor, major, critical, indeterminate, or a code")
        ->required();
    command->add_option("--text", options->text, "Additional text");
    command->add_option("--info", options->info, "An entry of additional information; repeatable")
        ->allow_extra_args(false);
    command->add_option("--program-group", options->programGroup,
                        "gratPgGrp, wratPgGrp, lratPgGrp, nrPgGrp, nonePgGrp, or a code");
    const auto kind = addCorrelationOptions(*command, *options);
    command->footer(kFooter);
    command->callback(
        [options, kind, &context] { context.exitCode = run(*options, kind(), context.output); });
}

} // namespace dolqctl
