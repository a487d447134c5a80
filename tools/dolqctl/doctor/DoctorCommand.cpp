#include <cstring>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "doctor/Diagnosis.h"

namespace dolqctl {

namespace {

constexpr char kNotTried[] =
    "Not tried: whether the service accepts an alarm and delivers it ('dolqctl raise' sends one). A "
    "program that has run since before a restart of the service can hang where this one does not: "
    "--pid shows its surroundings, and the library's probes what it waits for.";

struct Look {
    const char* name;
    Style style;
};

/// Indexed by `Observation::Status`.
constexpr Look kLooks[] = {
    {"ok", Style::Good}, {"warning", Style::Warning}, {"failed", Style::Bad}};

void printText(const Diagnosis& diagnosis, Output& output) {
    const std::string indent(9, ' ');
    for (const Observation& observation : diagnosis.observations()) {
        const Look& look = kLooks[static_cast<std::size_t>(observation.status)];
        output.stream() << output.styled(look.style, look.name)
                        << indent.substr(std::strlen(look.name));
        output.wrapped(observation.check + ": " + printable(observation.finding), indent);
        if (!observation.advice.empty()) {
            output.stream() << indent;
            output.wrapped("-> " + printable(observation.advice), indent);
        }
    }
    output.line();
    if (diagnosis.failures() > 0) {
        output.line(output.styled(Style::Bad, counted(diagnosis.failures(), "check") +
                                                  " failed: alarms are lost, or programs hang."));
    } else if (diagnosis.observations().front().status == Observation::Status::Warning) {
        output.line(output.styled(Style::Warning,
                                  "No check failed, but see the warnings: alarms may be lost."));
    } else {
        output.line(output.styled(Style::Good, "Found nothing that keeps alarms from being sent."));
    }
    output.wrapped(kNotTried);
}

void printJson(const Diagnosis& diagnosis, Output& output) {
    nlohmann::ordered_json json;
    json["failures"] = diagnosis.failures();
    json["checks"] = nlohmann::ordered_json::array();
    for (const Observation& observation : diagnosis.observations()) {
        json["checks"].push_back(
            {{"check", observation.check},
             {"status", kLooks[static_cast<std::size_t>(observation.status)].name},
             {"finding", observation.finding},
             {"advice", observation.advice}});
    }
    output.print(json);
}

} // namespace

int runDoctor(const DoctorArguments& arguments, Output& output) {
    Diagnosis diagnosis;
    checkTraces(diagnosis); // first: a backend reads its environment once
    checkEnvironment(diagnosis);
    checkLibrary(diagnosis);
    checkMappings(diagnosis);
    checkCorrelationService(diagnosis);
    checkNtfService(diagnosis);
    (arguments.json ? printJson : printText)(diagnosis, output);
    return diagnosis.failures() == 0 ? kFine : kFindings;
}

} // namespace dolqctl
