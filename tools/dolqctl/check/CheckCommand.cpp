#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

#include <nlohmann/json.hpp>
#include <sys/mman.h>

#include "Commands.h"
#include "Output.h"
#include "check/MappingFileChecker.h"
#include "common/RegularFile.h"
#include "mappings/Discovery.h"

namespace dolqctl {

namespace {

void refuseWrongRules(const std::vector<std::string>& allowed) {
    const std::set<std::string> names = ruleNames();
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
    std::ofstream copy(path, std::ios::binary);
    if (std::cin.peek() != std::char_traits<char>::eof()) {
        copy << std::cin.rdbuf();
    }
    if (!copy.flush() || std::cin.bad()) {
        throw CommandError("standard input cannot be read");
    }
    return path;
}

/// Nothing unless it is decimal without a leading 0, or hexadecimal, and has 32 bits.
std::optional<std::uint32_t> faultIdIn(std::string_view text) {
    const bool isHexadecimal = text.substr(0, 2) == "0x";
    text.remove_prefix(isHexadecimal ? 2 : 0);
    std::uint32_t number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, isHexadecimal ? 16 : 10);
    const bool isOctal = !isHexadecimal && text.size() > 1 && text.front() == '0';
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && !isOctal;
    return isNumber ? std::optional(number) : std::nullopt;
}

/// The faults and classes declared in `path`, a line each, that no load module's files map.
std::vector<Finding> unmappedFaults(const std::string& path,
                                    const std::map<LoadModule, Mappings>& mappings) {
    std::string content;
    if (const int error = common::readRegularFile(path, content.max_size(), content)) {
        throw CommandError("the faults in " + inQuotes(path) +
                           " cannot be read: " + std::strerror(error));
    }
    std::vector<Finding> findings;
    std::istringstream lines(content);
    FilePosition position{path};
    for (std::string line; std::getline(lines, line);) {
        ++position.line;
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t tab = std::min(line.find('\t'), line.size());
        const std::optional<std::uint32_t> faultId = faultIdIn(line.substr(0, tab));
        const std::string moClass = line.substr(std::min(tab + 1, line.size()));
        if (!faultId || tab == line.size() ||
            moClass.find_first_of(" \t\v\f\r,=") != moClass.npos) {
            throw CommandError(positionText(position) + ": " + inQuotes(line) +
                               " is no fault id and class with a tab between them");
        }
        if (std::none_of(mappings.begin(), mappings.end(), [&](const auto& each) {
                return each.second.count({*faultId, moClass}) > 0;
            })) {
            findings.push_back(
                {position, Rule::UnmappedFault, {std::to_string(*faultId), moClass}});
        }
    }
    return findings;
}

void print(const Finding& finding) {
    const bool isError = finding.severity() == Severity::Error;
    const std::string more =
        finding.more > 0 ? " (and " + std::to_string(finding.more) + " more)" : "";
    printWrapped(positionText(finding.position) + (isError ? ": error: " : ": warning: ") +
                     finding.message() + more + " [" + finding.name() + ']',
                 "    ");
}

} // namespace

int runCheck(const CheckArguments& arguments) {
    refuseWrongRules(arguments.allowed);
    std::vector<std::string> paths = arguments.files;
    bool isComplete = true;
    bool isMissing = false;
    if (arguments.discovered) {
        const Discovery discovery = discover(arguments.identity);
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
    MappingFileChecker checker(10); // of one rule, as the help says
    for (const std::string& path : paths) {
        std::error_code error;
        if (arguments.discovered) {
            checker.read(path, path, MappingFileChecker::Kind::MappingFile);
        } else if (path == "-") {
            checker.read(keptStandardInput(), path, MappingFileChecker::Kind::Either);
        } else if (std::filesystem::exists(path, error) || error) {
            checker.read(path, path, MappingFileChecker::Kind::Either);
        } else {
            tell("there is no file " + inQuotes(path));
            isMissing = true;
        }
    }
    std::vector<Finding> findings = checker.takeFindings();
    if (!arguments.faults.empty()) {
        for (Finding& each : unmappedFaults(arguments.faults, checker.mappings())) {
            findings.push_back(std::move(each));
        }
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
        printJson(nlohmann::ordered_json{{"files", checker.files()},
                                         {"errors", errors},
                                         {"warnings", warnings},
                                         {"findings", findings}});
    } else {
        for (const Finding& finding : findings) {
            print(finding);
        }
        printLine(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                  counted(checker.files().size(), "file"));
    }
    const bool isFine = isComplete && errors == 0 && (!arguments.strict || warnings == 0);
    return isMissing ? kError : isFine ? kFine : kFindings;
}

} // namespace dolqctl
