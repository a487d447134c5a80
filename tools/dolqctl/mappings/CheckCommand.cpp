#include <memory>

#include "Commands.h"
#include "Options.h"
#include "mappings/Discovery.h"
#include "mappings/JsonView.h"
#include "mappings/MappingFileChecker.h"

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

struct Arguments {
    MappingFileOptions files;
    bool strict = false;
    bool json = false;
};

int run(const Arguments& arguments, Output& output) {
    const MappingFiles files = mappingFilesOf(arguments.files);
    MappingFileChecker checker;
    for (const std::string& path : files.paths) {
        checker.check(path);
    }
    const std::size_t errors = checker.count(Severity::Error);
    const std::size_t warnings = checker.count(Severity::Warning);
    if (arguments.json) {
        printCheckJson(files.paths, checker, output);
    } else {
        for (const Finding& finding : checker.findings()) {
            const Style style = finding.severity == Severity::Error ? Style::Bad : Style::Warning;
            output.line(output.styled(Style::Bold, positionText(finding.position) + ':') + ' ' +
                        output.styled(style, severityText(finding.severity) + std::string(":")) +
                        ' ' + finding.message + " [" + finding.rule + ']');
        }
        output.line(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                    counted(files.paths.size(), "file"));
    }
    return !files.isComplete || errors > 0 || (arguments.strict && warnings > 0) ? kFindings
                                                                                 : kFine;
}

} // namespace

void addCheckCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<Arguments>();
    Options options =
        commandLine.add("check", "Find the mistakes in alarm mapping files", kFooter,
                        [arguments](Output& output) { return run(*arguments, output); });
    addMappingFileOptions(options, arguments->files);
    options.flag("--strict", arguments->strict, "Exit with 1 also for warnings");
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
