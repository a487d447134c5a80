#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <system_error>

#include <nlohmann/json.hpp>
#include <sys/mman.h>

#include "Commands.h"
#include "Discovery.h"
#include "Output.h"
#include "check/MappingFileChecker.h"
#include "common/RegularFile.h"

namespace dolqctl {

namespace {

void refuseWrongRules(const std::vector<std::string>& allowed) {
    std::set<std::string> names;
    for (const RuleText& rule : ruleTexts()) {
        names.insert(rule.name);
    }
    for (const std::string& rule : allowed) {
        if (names.count(rule) == 0) {
            throw CommandError("there is no rule " + inQuotes(rule) + "; the rules are " +
                               joined(names));
        }
        if (rule == "not-loaded" || rule == "no-mapping") {
            throw CommandError("the rule " + inQuotes(rule) +
                               " cannot be allowed: nothing of such a file is used");
        }
    }
}

/// The path of an unnamed file that holds the standard input: the reader takes regular files only.
std::string keptStandardInput() {
    std::string path = "/proc/self/fd/" + std::to_string(memfd_create("", MFD_CLOEXEC));
    std::ofstream(path, std::ios::binary) << std::cin.rdbuf();
    return path;
}

/// What is read, each load module's files by a checker of its own.
struct Report {
    std::map<LoadModule, MappingFileChecker> checkers;
    std::map<std::string, std::set<LoadModule>> readers; ///< of each file
    std::vector<std::string> files;                      ///< each once
    std::vector<Finding> findings;
};

/// Reads a file of `loadModule` on top of those before it; with `orManifest` also those it names.
void read(Report& report, const LoadModule& loadModule, const std::string& path,
          const std::string& name, bool orManifest) {
    std::error_code error; // of a file that is not there
    const auto canonical = std::filesystem::weakly_canonical(name, error);
    std::set<LoadModule>& readers = report.readers[error ? name : canonical.string()];
    const bool isFirst = readers.empty();
    if (!readers.insert(loadModule).second) {
        return;
    }
    constexpr std::size_t kMost = 10; // of one rule, as the help says
    std::vector<LoadModuleFile> named;
    MappingFileChecker& checker = report.checkers.try_emplace(loadModule, kMost).first->second;
    for (Finding& each : checker.read(path, name, orManifest ? &named : nullptr)) {
        if (isFirst || each.rule == Rule::Override) { // the others are known
            report.findings.push_back(std::move(each));
        }
    }
    if (isFirst) {
        report.files.push_back(name);
    }
    for (const auto& [module, file] : named) {
        read(report, module, file, file, false);
    }
}

/// Adds the faults and classes declared in `path`, a line each, that no load module's files map.
void addUnmappedFaults(const std::string& path, Report& report) {
    static const std::regex form("(0|[1-9][0-9]{0,9}|0x[0-9a-fA-F]{1,8})\t([^\\s,=]*)");
    std::string content;
    if (const int error = common::readRegularFile(path, content.max_size(), content)) {
        throw CommandError("the faults in " + inQuotes(path) +
                           " cannot be read: " + std::strerror(error));
    }
    std::istringstream lines(content);
    FilePosition position{path};
    for (std::string line; std::getline(lines, line);) {
        ++position.line;
        std::smatch fields;
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (!std::regex_match(line, fields, form) ||
            std::stoull(fields[1], nullptr, 0) > UINT32_MAX) {
            throw CommandError(positionText(position) + ": " + inQuotes(line) +
                               " is no fault id and class with a tab between them");
        }
        const std::pair fault(static_cast<std::uint32_t>(std::stoull(fields[1], nullptr, 0)),
                              fields.str(2));
        if (std::none_of(report.checkers.begin(), report.checkers.end(), [&](const auto& each) {
                return each.second.mappings().count(fault) > 0;
            })) {
            report.findings.push_back(
                {position, Rule::UnmappedFault, {std::to_string(fault.first), fault.second}});
        }
    }
}

void print(const Finding& finding) {
    const bool isError = finding.severity() == Severity::Error;
    const std::string more =
        finding.more > 0 ? " (and " + std::to_string(finding.more) + " more)" : "";
    printLine(positionText(finding.position) + (isError ? ": error: " : ": warning: ") +
              finding.message() + more + " [" + finding.name() + ']');
}

} // namespace

int runCheck(const Arguments& arguments) {
    refuseWrongRules(arguments.allowed);
    std::vector<std::string> paths = arguments.files;
    bool isComplete = true;
    bool isMissing = false;
    if (arguments.discovered) {
        const Discovery discovery = discover();
        paths = discovery.mappingFiles;
        isComplete = discovery.problems.empty();
        if (paths.empty()) {
            throw CommandError(discovery.whyNoMappingFile());
        }
        for (const std::string& problem : discovery.problems) {
            tell(problem);
        }
    } else if (paths.empty()) {
        throw CommandError("name a mapping FILE or give --discovered");
    }
    Report report;
    for (const std::string& path : paths) {
        std::error_code error;
        if (path != "-" && !arguments.discovered && !std::filesystem::exists(path, error) &&
            !error) {
            tell("there is no file " + inQuotes(path));
            isMissing = true;
        } else {
            read(report, {}, path == "-" ? keptStandardInput() : path, path, !arguments.discovered);
        }
    }
    std::vector<Finding>& findings = report.findings;
    for (const auto& [loadModule, checker] : report.checkers) {
        const std::vector<Finding> similar = checker.findSimilarClasses();
        findings.insert(findings.end(), similar.begin(), similar.end());
    }
    if (!arguments.faults.empty()) {
        addUnmappedFaults(arguments.faults, report);
    }
    const auto isAllowed = [&allowed = arguments.allowed](const Finding& finding) {
        return std::find(allowed.begin(), allowed.end(), finding.name()) != allowed.end();
    };
    findings.erase(std::remove_if(findings.begin(), findings.end(), isAllowed), findings.end());
    std::size_t errors = 0;
    std::size_t warnings = 0;
    for (const Finding& finding : findings) {
        (finding.severity() == Severity::Error ? errors : warnings) += 1 + finding.more;
    }
    if (arguments.json) {
        printJson(nlohmann::ordered_json{{"files", report.files},
                                         {"errors", errors},
                                         {"warnings", warnings},
                                         {"findings", findings}});
    } else {
        for (const Finding& finding : findings) {
            print(finding);
        }
        printLine(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                  counted(report.files.size(), "file"));
    }
    const bool isFine = isComplete && errors == 0 && (!arguments.strict || warnings == 0);
    return isMissing ? kError : isFine ? kFine : kFindings;
}

} // namespace dolqctl
