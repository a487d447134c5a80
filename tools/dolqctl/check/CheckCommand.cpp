#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <system_error>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Discovery.h"
#include "Output.h"
#include "check/MappingFileChecker.h"
#include "common/RegularFile.h"

namespace dolqctl {

namespace {

void refuseWrongRules(const std::vector<std::string>& allowed) {
    std::set<std::string> names; // of those that can be allowed
    for (const RuleText& each : kRuleTexts) {
        if (each.severity != Severity::LostFile) {
            names.insert(each.name);
        }
    }
    for (const std::string& rule : allowed) {
        if (names.count(rule) == 0) {
            throw CommandError("--allow: " + inQuotes(rule) + " is none of " + joined(names));
        }
    }
}

/// What is read, each load module's files by a checker of its own.
struct Report {
    std::map<LoadModule, MappingFileChecker> checkers;
    std::vector<std::string> files; ///< each once
    std::vector<Finding> findings;
};

/// Reads a file of `loadModule` on top of those before it; with `orManifest` also those it names.
void read(Report& report, const LoadModule& loadModule, const std::string& file, bool orManifest) {
    if (std::find(report.files.begin(), report.files.end(), file) == report.files.end()) {
        report.files.push_back(file);
    }
    std::vector<LoadModuleFile> named;
    const auto findings = report.checkers[loadModule].read(file, orManifest ? &named : nullptr);
    report.findings.insert(report.findings.end(), findings.begin(), findings.end());
    for (const auto& [module, path] : named) {
        read(report, module, path, false);
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

const char* severityOf(const Finding& finding) { return finding.isError() ? "error" : "warning"; }

std::string lineOf(const Finding& finding) {
    return positionText(finding.position) + ": " + severityOf(finding) + ": " + finding.message +
           " [" + finding.ruleText().name + ']';
}

} // namespace

int runCheck(const Arguments& arguments) {
    refuseWrongRules(arguments.allowed);
    std::vector<std::string> paths = arguments.files;
    bool isComplete = true;
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
    bool isMissing = false;
    for (const std::string& path : paths) {
        std::error_code error;
        isMissing = isMissing || (path != "-" && !std::filesystem::exists(path, error) && !error);
        read(report, {}, path, !arguments.discovered);
    }
    for (const auto& [loadModule, checker] : report.checkers) {
        const std::vector<Finding> similar = checker.findSimilarClasses();
        report.findings.insert(report.findings.end(), similar.begin(), similar.end());
    }
    if (!arguments.faults.empty()) {
        addUnmappedFaults(arguments.faults, report);
    }
    std::size_t errors = 0;
    std::size_t warnings = 0;
    auto list = nlohmann::ordered_json::array();
    std::set<std::string> lines; // several load modules can have a file
    for (const Finding& each : report.findings) {
        const auto& allowed = arguments.allowed;
        const std::string rule = each.ruleText().name;
        if (!lines.insert(lineOf(each)).second ||
            std::find(allowed.begin(), allowed.end(), rule) != allowed.end()) {
            continue;
        }
        ++(each.isError() ? errors : warnings);
        if (arguments.json) {
            list.push_back({{"file", each.position.file},
                            {"line", each.position.line},
                            {"column", each.position.column},
                            {"severity", severityOf(each)},
                            {"rule", rule},
                            {"message", each.message}});
        } else {
            printLine(lineOf(each));
        }
    }
    if (arguments.json) {
        printJson({{"files", report.files},
                   {"errors", errors},
                   {"warnings", warnings},
                   {"findings", list}});
    } else {
        printLine(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                  counted(report.files.size(), "file"));
    }
    const bool isFine = isComplete && errors == 0 && (!arguments.strict || warnings == 0);
    return isMissing && !arguments.discovered ? kError : isFine ? kFine : kFindings;
}

} // namespace dolqctl
