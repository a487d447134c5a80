#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

#include <nlohmann/json.hpp>
#include <sys/mman.h>

#include "Commands.h"
#include "Output.h"
#include "mappings/Discovery.h"
#include "mappings/MappingFileChecker.h"

namespace dolqctl {

namespace {

constexpr std::string_view kRules[] = {
    "beyond-32-bits",      "blank-in-class",    "class-case",      "class-character",
    "class-never-matches", "duplicate",         "empty-class",     "invisible-in-class",
    "look-alike",          "missing-attribute", "missing-class",   "missing-file",
    "misspelt-tag",        "no-class",          "no-load-module",  "no-major-id",
    "no-mapping",          "not-an-integer",    "not-loaded",      "not-utf-8",
    "not-well-formed",     "odd-number",        "override",        "root-name",
    "text-after-number",   "unknown-attribute", "unknown-element", "unread-text"};

void refuseWrongRules(const std::vector<std::string>& allowed) {
    for (const std::string& rule : allowed) {
        if (std::find(std::begin(kRules), std::end(kRules), rule) == std::end(kRules)) {
            throw CommandError("there is no rule " + inQuotes(rule) + "; the rules are " +
                               joined(kRules));
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

/// Without those that name a file again.
std::vector<std::string> eachOnce(const std::vector<std::string>& paths) {
    std::vector<std::string> once;
    for (const std::string& path : paths) {
        const auto same = std::find_if(once.begin(), once.end(), [&](const std::string& other) {
            std::error_code ignored; // of a file that is not there
            return path == other || std::filesystem::equivalent(path, other, ignored);
        });
        if (same == once.end()) {
            once.push_back(path);
        } else {
            tell(path + " is checked once, as " + *same);
        }
    }
    return once;
}

void print(const Finding& finding) {
    const bool isError = finding.severity == Severity::Error;
    const std::string more =
        finding.more > 0 ? " (and " + std::to_string(finding.more) + " more)" : "";
    printWrapped(positionText(finding.position) + (isError ? ": error: " : ": warning: ") +
                     finding.message + more + " [" + finding.rule + ']',
                 "    ");
}

} // namespace

int runCheck(const CheckArguments& arguments) {
    refuseWrongRules(arguments.allowed);
    std::vector<std::string> paths = eachOnce(arguments.files);
    bool isComplete = true;
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
    Inventory inventory;
    MappingFileChecker checker(inventory, 10); // of one rule, as the help says
    for (const std::string& path : paths) {
        checker.read(path == "-" ? keptStandardInput() : path, path, !arguments.discovered);
    }
    std::vector<Finding> findings;
    std::copy_if(inventory.findings.begin(), inventory.findings.end(), std::back_inserter(findings),
                 [&](const Finding& finding) {
                     const auto& allowed = arguments.allowed;
                     return std::find(allowed.begin(), allowed.end(), finding.rule) ==
                            allowed.end();
                 });
    std::size_t errors = 0;
    std::size_t warnings = 0;
    for (const Finding& finding : findings) {
        (finding.severity == Severity::Error ? errors : warnings) += 1 + finding.more;
    }
    if (arguments.json) {
        printJson(nlohmann::ordered_json{
            {"files", paths}, {"errors", errors}, {"warnings", warnings}, {"findings", findings}});
    } else {
        for (const Finding& finding : findings) {
            print(finding);
        }
        printLine(counted(errors, "error") + ", " + counted(warnings, "warning") + " in " +
                  counted(paths.size(), "file"));
    }
    return !isComplete || errors > 0 || (arguments.strict && warnings > 0) ? kFindings : kFine;
}

} // namespace dolqctl
