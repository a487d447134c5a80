#include <algorithm>
#include <cctype>
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

/// The files of a load module are read on top of each other.
using Checkers = std::map<LoadModule, MappingFileChecker>;

/// Adds the classes that differ in letter case alone from another, and those that occur once,
/// beside a similar one that occurs often.
void addSimilarClasses(const Mappings& mappings, std::vector<Finding>& findings) {
    constexpr std::size_t kOften = 10;
    using Uses = std::vector<const Mappings::value_type*>;
    std::map<std::string, Uses> byLetters; // digits make other names
    for (const auto& each : mappings) {
        std::string letters = each.first.second;
        letters.erase(std::remove_if(letters.begin(), letters.end(),
                                     [](unsigned char c) { return std::isdigit(c) != 0; }),
                      letters.end());
        byLetters[letters].push_back(&each);
    }
    std::map<std::string, const Uses*> often;
    for (const auto& [letters, uses] : byLetters) {
        if (uses.size() >= kOften) {
            often.emplace(letters, &uses);
        }
    }
    std::map<std::wstring, const Uses*> spellings;
    for (const auto& [letters, uses] : byLetters) {
        const Uses* other = spellings.try_emplace(lookOf(letters).folded, &uses).first->second;
        const std::size_t most = letters.size() == 4 ? 1 : 2; // letters that differ
        const bool isRare = uses.size() == 1 && letters.size() >= 4;
        for (auto each = often.begin(); isRare && other == &uses && each != often.end(); ++each) {
            other = distance(letters, each->first) <= most ? each->second : other;
        }
        if (other != &uses) {
            const auto& [fault, history] = *uses.front();
            const auto& [similar, place] = *other->front();
            findings.push_back(
                {history.front().position,
                 Rule::SimilarClass,
                 {fault.second, similar.second, positionText(place.front().position)}});
        }
    }
}

/// Adds the faults and classes declared in `path`, a line each, that no load module's files map.
void addUnmappedFaults(const std::string& path, const Checkers& checkers,
                       std::vector<Finding>& findings) {
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
        if (std::none_of(checkers.begin(), checkers.end(), [&](const auto& each) {
                return each.second.inventory().mappings.count(fault) > 0;
            })) {
            findings.push_back(
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
    Checkers checkers;
    std::vector<std::string> files; // each once
    const auto read = [&](const LoadModule& loadModule, const std::string& file,
                          std::vector<LoadModuleFile>* named) {
        if (std::find(files.begin(), files.end(), file) == files.end()) {
            files.push_back(file);
        }
        checkers[loadModule].read(file, named);
    };
    bool isMissing = false;
    for (const std::string& path : paths) {
        std::error_code error;
        isMissing = isMissing || (path != "-" && !std::filesystem::exists(path, error) && !error);
        std::vector<LoadModuleFile> named;
        read({}, path, arguments.discovered ? nullptr : &named);
        for (const auto& [loadModule, file] : named) {
            read(loadModule, file, nullptr);
        }
    }
    std::vector<Finding> findings;
    for (const auto& [loadModule, checker] : checkers) {
        const auto& [mappings, those] = checker.inventory();
        findings.insert(findings.end(), those.begin(), those.end());
        addSimilarClasses(mappings, findings);
    }
    if (!arguments.faults.empty()) {
        addUnmappedFaults(arguments.faults, checkers, findings);
    }
    std::size_t errors = 0;
    std::size_t warnings = 0;
    auto list = nlohmann::ordered_json::array();
    std::set<std::string> lines; // several load modules can have a file
    for (const Finding& each : findings) {
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
        printJson(
            {{"files", files}, {"errors", errors}, {"warnings", warnings}, {"findings", list}});
    } else {
        printLine(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                  counted(files.size(), "file"));
    }
    const bool isFine = isComplete && errors == 0 && (!arguments.strict || warnings == 0);
    return isMissing && !arguments.discovered ? kError : isFine ? kFine : kFindings;
}

} // namespace dolqctl
