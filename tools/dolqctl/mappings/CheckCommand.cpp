#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>

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
    std::vector<std::string> files;
    bool discovered = false;
    Identity identity;
    bool strict = false;
    bool json = false;
};

struct Files {
    std::vector<std::string> paths; ///< in reading order, each file once
    bool isComplete = true;         ///< the load-module handler could be asked for all of them
};

/// By another spelling or a link, too.
bool isSameFile(const std::string& path, const std::string& other) {
    std::error_code ignored; // of a file that is not there
    return path == other || std::filesystem::equivalent(path, other, ignored);
}

/// The files that are named, or those of the load module.
Files filesOf(const Arguments& arguments) {
    silenceTraces();
    Files files;
    std::vector<std::string> found = arguments.files;
    if (arguments.discovered) {
        const Discovery discovery = discover(arguments.identity);
        for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
            tell(failureText(failure));
        }
        if (discovery.mappingFiles.empty()) {
            throw CommandError(printable(whyNoMappingFile(discovery)));
        }
        found = discovery.mappingFiles;
        files.isComplete = discovery.failedCategories.empty();
    } else if (found.empty()) {
        throw CommandError("name a mapping FILE or give --discovered");
    }
    for (const std::string& path : found) {
        const auto isPath = [&](const std::string& other) { return isSameFile(path, other); };
        if (std::none_of(files.paths.begin(), files.paths.end(), isPath)) {
            files.paths.push_back(path);
        }
    }
    return files;
}

int run(const Arguments& arguments, Output& output) {
    const Files files = filesOf(arguments);
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
        commandLine.add("check", "Find the mistakes in alarm mapping files and manifests", kFooter,
                        [arguments](Output& output) { return run(*arguments, output); });
    const auto files = options.files(arguments->files, "Mapping files, in reading order");
    options
        .flag("--discovered", arguments->discovered,
              "The mapping files of the load module, as the library finds them")
        .excludes(files);
    addIdentityOptions(options, arguments->identity);
    options.flag("--strict", arguments->strict, "Exit with 1 also for warnings");
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
