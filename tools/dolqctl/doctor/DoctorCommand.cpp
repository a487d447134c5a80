#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Options.h"
#include "ProgramEnvironment.h"
#include "doctor/Diagnosis.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(Looks at the surroundings as they are for programs started from this shell. It opens a session with
the notification service, but sends nothing.

Exit code 0: an alarm could be raised now, warnings or not. 1: it could not.

Example:
  ZBN_NO=CXC1370001 ZBN_REV=R1A dolqctl doctor)";

struct Look {
    const char* name;
    Style style;
};

/// Indexed by `Observation::Status`.
constexpr Look kLooks[] = {
    {"ok", Style::Good}, {"warning", Style::Warning}, {"failed", Style::Bad}};

const Look& lookOf(const Observation& observation) {
    return kLooks[static_cast<std::size_t>(observation.status)];
}

std::string findingText(const Observation& observation) {
    if (!observation.milliseconds) {
        return observation.finding;
    }
    char duration[32] = "";
    std::snprintf(duration, sizeof(duration), " (%.1f ms)", *observation.milliseconds);
    return observation.finding + duration;
}

void printText(const Diagnosis& diagnosis, Output& output) {
    Table table({{"STATUS"}, {"CHECK"}, {"FINDING"}});
    for (const Observation& observation : diagnosis.observations()) {
        table.add({{lookOf(observation).name, lookOf(observation).style},
                   observation.check,
                   findingText(observation)});
    }
    output.print(table);
    output.line();
    for (const Observation& observation : diagnosis.observations()) {
        if (!observation.advice.empty()) {
            output.line(output.styled(lookOf(observation).style, observation.check) + ": " +
                        printable(observation.advice));
        }
    }
    const std::ptrdiff_t failures = diagnosis.failures();
    output.line(failures == 0
                    ? output.styled(Style::Good, "An alarm could be raised now.")
                    : output.styled(Style::Bad, "No alarm could be raised now: " +
                                                    std::to_string(failures) + " failed."));
}

void printJson(const Diagnosis& diagnosis, Output& output) {
    nlohmann::ordered_json json;
    json["canRaise"] = diagnosis.failures() == 0;
    json["checks"] = nlohmann::ordered_json::array();
    for (const Observation& observation : diagnosis.observations()) {
        nlohmann::ordered_json check = {{"check", observation.check},
                                        {"status", lookOf(observation).name},
                                        {"finding", observation.finding}};
        if (!observation.advice.empty()) {
            check["advice"] = observation.advice;
        }
        if (observation.milliseconds) {
            check["milliseconds"] = *observation.milliseconds;
        }
        json["checks"].push_back(std::move(check));
    }
    output.print(json);
}

struct Arguments {
    std::optional<std::string> pid;
    bool json = false;
};

int run(const Arguments& arguments, Output& output) {
    if (arguments.pid) {
        takeOnProgram(*arguments.pid);
    }
    Diagnosis diagnosis;
    checkLibraryAndTraces(diagnosis); // first: a backend reads its environment once
    checkEnvironment(diagnosis);
    checkMappings(diagnosis);
    checkCorrelationService(diagnosis);
    checkNotificationLog(diagnosis);
    checkNtfService(diagnosis);
    (arguments.json ? printJson : printText)(diagnosis, output);
    return diagnosis.failures() == 0 ? kFine : kFindings;
}

} // namespace

void addDoctorCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<Arguments>();
    Options options =
        commandLine.add("doctor", "Check the surroundings that an alarm needs", kFooter,
                        [arguments](Output& output) { return run(*arguments, output); });
    options.value("--pid", "PID", arguments->pid,
                  "Judge the surroundings of a running program instead");
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
