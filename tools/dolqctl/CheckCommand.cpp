#include "CheckCommand.h"

#include <algorithm>
#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "MappingFileChecker.h"
#include "QuietTraces.h"
#include "Sources.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(Each finding is one line: FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE]. An error is a mapping that is
lost or not what is written, a warning something that works but was hardly meant. Several files
are read one on top of the other, as the files of one load module are.

Exit codes: 0 no error; 1 errors, with --strict warnings, or load modules that could not be asked
for their files; 2 wrong usage, or no file to check.

Example:
  dolqctl check --strict central.xml site-override.xml)";

struct Options {
    Sources sources;
    bool strict = false;
    bool json = false;
};

using Json = nlohmann::ordered_json;

const char* nameOf(Severity severity) { return severity == Severity::Error ? "error" : "warning"; }

Json toJson(const Finding& finding) {
    Json json;
    addTo(json, finding.place);
    json["severity"] = nameOf(finding.severity);
    json["rule"] = finding.rule;
    json["message"] = finding.message;
    if (finding.other) {
        addTo(json["other"], *finding.other);
    }
    return json;
}

std::string counted(std::ptrdiff_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

int run(const Options& options, Output& output) {
    const SourceFiles files = filesOf(options.sources);
    quietTraces();
    MappingFileChecker checker;
    for (const std::string& path : files.paths) {
        checker.check(path);
    }
    const std::vector<Finding>& findings = checker.findings();
    const auto errors = std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.severity == Severity::Error;
    });
    const auto warnings = static_cast<std::ptrdiff_t>(findings.size()) - errors;
    if (options.json) {
        Json json{{"files", files.paths},
                  {"errors", errors},
                  {"warnings", warnings},
                  {"findings", Json::array()}};
        for (const Finding& finding : findings) {
            json["findings"].push_back(toJson(finding));
        }
        output.print(json);
    } else {
        for (const Finding& finding : findings) {
            const bool isError = finding.severity == Severity::Error;
            output.line(output.styled(Style::Bold, text(finding.place) + ':') + ' ' +
                        output.styled(isError ? Style::Bad : Style::Warning,
                                      std::string(nameOf(finding.severity)) + ':') +
                        ' ' + finding.message + " [" + finding.rule + ']');
        }
        output.line(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                    counted(static_cast<std::ptrdiff_t>(files.paths.size()), "file"));
    }
    return !files.isComplete || errors > 0 || (options.strict && warnings > 0) ? kFindings : kFine;
}

} // namespace

void addCheckCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("check", "Find the mistakes in alarm mapping files");
    const auto options = std::make_shared<Options>();
    addSourceOptions(*command, options->sources);
    command->add_flag("--strict", options->strict, "Exit with 1 also for warnings");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer(kFooter);
    command->callback([options, &context] { context.exitCode = run(*options, context.output); });
}

} // namespace dolqctl
