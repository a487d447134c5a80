#include "DoctorCommand.h"

#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "Diagnosis.h"

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

/// Indexed by `Finding::Status`.
constexpr Look kLooks[] = {
    {"ok", Style::Good}, {"warning", Style::Warning}, {"failed", Style::Bad}};

const Look& lookOf(const Finding& finding) {
    return kLooks[static_cast<std::size_t>(finding.status)];
}

std::string textOf(const Finding& finding) {
    if (!finding.milliseconds) {
        return finding.text;
    }
    char duration[32] = "";
    std::snprintf(duration, sizeof(duration), " (%.1f ms)", *finding.milliseconds);
    return finding.text + duration;
}

void printText(const Diagnosis& diagnosis, Output& output) {
    Table table({{"STATUS"}, {"CHECK"}, {"FINDING"}});
    for (const Finding& finding : diagnosis.findings()) {
        table.add({{lookOf(finding).name, lookOf(finding).style}, finding.check, textOf(finding)});
    }
    output.print(table);
    output.line();
    for (const Finding& finding : diagnosis.findings()) {
        if (!finding.advice.empty()) {
            output.line(output.styled(lookOf(finding).style, finding.check) + ": " +
                        printable(finding.advice));
        }
    }
    const std::size_t failures = diagnosis.failures();
    output.line(failures == 0
                    ? output.styled(Style::Good, "An alarm could be raised now.")
                    : output.styled(Style::Bad, "No alarm could be raised now: " +
                                                    std::to_string(failures) + " failed."));
}

void printJson(const Diagnosis& diagnosis, Output& output) {
    nlohmann::ordered_json json;
    json["canRaise"] = diagnosis.failures() == 0;
    json["checks"] = nlohmann::ordered_json::array();
    for (const Finding& finding : diagnosis.findings()) {
        nlohmann::ordered_json check = {
            {"check", finding.check}, {"status", lookOf(finding).name}, {"finding", finding.text}};
        if (!finding.advice.empty()) {
            check["advice"] = finding.advice;
        }
        if (finding.milliseconds) {
            check["milliseconds"] = *finding.milliseconds;
        }
        json["checks"].push_back(std::move(check));
    }
    output.print(json);
}

int run(bool asJson, Output& output) {
    Diagnosis diagnosis;
    diagnoseTraces(diagnosis);
    diagnoseEnvironment(diagnosis);
    diagnoseMappings(diagnosis);
    diagnoseCorrelation(diagnosis);
    diagnoseNtf(diagnosis);
    (asJson ? printJson : printText)(diagnosis, output);
    return diagnosis.failures() == 0 ? kFine : kFindings;
}

} // namespace

void addDoctorCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("doctor", "Check the surroundings that an alarm needs");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print JSON");
    command->footer(kFooter);
    command->callback([json, &context] { context.exitCode = run(*json, context.output); });
}

} // namespace dolqctl
