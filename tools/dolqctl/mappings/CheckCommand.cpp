#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include <nlohmann/json.hpp>
#include <sys/mman.h>

#include "Commands.h"
#include "Output.h"
#include "mappings/Checkers.h"
#include "mappings/Discovery.h"

namespace dolqctl {

namespace {

constexpr std::string_view kRules[] = {
    "behind-root",         "beyond-32-bits",    "blank-in-class",    "blank-in-number",
    "character-reference", "class-case",        "class-character",   "class-never-matches",
    "duplicate",           "empty-class",       "final-comma",       "invisible-in-class",
    "look-alike",          "missing-attribute", "missing-class",     "missing-file",
    "misspelt-root",       "misspelt-tag",      "nested-mapping",    "no-class",
    "no-major-id",         "no-mapping",        "not-an-integer",    "not-loaded",
    "not-utf-8",           "override",          "text-after-number", "unknown-attribute",
    "unknown-element",     "unknown-entity",    "unread-text"};

constexpr std::size_t kMostOfOneRule = 10;
constexpr char kStandardInput[] = "-";

struct Files {
    std::vector<std::string> paths; ///< in reading order, each file once
    bool isComplete = true;         ///< the load-module handler could be asked for all of them
};

/// The files that are named, or those of the load module.
Files filesOf(const CheckArguments& arguments) {
    silenceTraces();
    Files files;
    std::vector<std::string> found = arguments.files;
    if (arguments.discovered) {
        const Discovery discovery = discover(arguments.identity);
        if (discovery.mappingFiles.empty()) {
            throw CommandError(discovery.whyNoMappingFile());
        }
        for (const std::string& problem : discovery.problems) {
            tell(problem);
        }
        found = discovery.mappingFiles;
        files.isComplete = discovery.failedCategories.empty();
    } else if (found.empty()) {
        throw CommandError("name a mapping FILE or give --discovered");
    }
    for (const std::string& path : found) {
        const auto same =
            std::find_if(files.paths.begin(), files.paths.end(), [&](const std::string& other) {
                std::error_code ignored; // of a file that is not there
                return path == other || std::filesystem::equivalent(path, other, ignored);
            });
        if (same == files.paths.end()) {
            files.paths.push_back(path);
        } else {
            tell(printable(path) + " is checked once, as " + printable(*same));
        }
    }
    return files;
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

const char* severityText(Severity severity) {
    return severity == Severity::Error ? "error" : "warning";
}

/// "3,999,990".
std::string inThousands(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3;) {
        text.insert(at -= 3, ",");
    }
    return text;
}

void print(const Finding& finding, Output& output) {
    const Style style = finding.severity == Severity::Error ? Style::Bad : Style::Warning;
    const std::string more =
        finding.more > 0 ? " (and " + inThousands(finding.more) + " more)" : "";
    output.line(output.styled(Style::Bold, positionText(finding.position) + ':') + ' ' +
                output.styled(style, severityText(finding.severity) + std::string(":")) + ' ' +
                finding.message + more + " [" + finding.rule + ']');
}

nlohmann::ordered_json jsonOf(const Finding& finding) {
    nlohmann::ordered_json json = finding.position;
    json["severity"] = severityText(finding.severity);
    json["rule"] = finding.rule;
    json["message"] = finding.message;
    if (finding.other) {
        json["other"] = *finding.other;
    }
    if (finding.more > 0) {
        json["more"] = finding.more;
    }
    return json;
}

} // namespace

int runCheck(const CheckArguments& arguments, Output& output) {
    for (const std::string& rule : arguments.allowed) {
        if (std::find(std::begin(kRules), std::end(kRules), rule) == std::end(kRules)) {
            throw CommandError("there is no rule " + inQuotes(rule) + "; the rules are " +
                               joined(kRules));
        }
        if (rule == "not-loaded" || rule == "no-mapping") {
            throw CommandError("the rule " + inQuotes(rule) +
                               " cannot be allowed: nothing of such a file is used");
        }
    }
    const Files files = filesOf(arguments);
    MappingFileChecker checker(kMostOfOneRule);
    std::vector<Finding> findings;
    std::size_t errors = 0;
    std::size_t warnings = 0;
    for (const std::string& path : files.paths) {
        const std::string readable = path == kStandardInput ? keptStandardInput() : path;
        for (const Finding& finding : checker.check(readable, path)) {
            const auto& allowed = arguments.allowed;
            if (std::find(allowed.begin(), allowed.end(), finding.rule) == allowed.end()) {
                (finding.severity == Severity::Error ? errors : warnings) += 1 + finding.more;
                findings.push_back(finding);
            }
        }
    }
    if (arguments.json) {
        nlohmann::ordered_json json{{"files", files.paths},
                                    {"errors", errors},
                                    {"warnings", warnings},
                                    {"findings", nlohmann::ordered_json::array()}};
        for (const Finding& finding : findings) {
            json["findings"].push_back(jsonOf(finding));
        }
        output.print(json);
    } else {
        for (const Finding& finding : findings) {
            print(finding, output);
        }
        output.line(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                    counted(files.paths.size(), "file"));
    }
    return !files.isComplete || errors > 0 || (arguments.strict && warnings > 0) ? kFindings
                                                                                 : kFine;
}

} // namespace dolqctl
