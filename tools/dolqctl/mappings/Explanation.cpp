#include "mappings/Explanation.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>

#include "Output.h"
#include "common/Environment.h"
#include "mappings/Discovery.h"
#include "mappings/MappingFileChecker.h"

namespace dolqctl {

namespace {

constexpr char kOtherClass[] = "other class";

/// For comparisons that white space does not count in.
std::string withoutWhiteSpace(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(),
                              [](unsigned char c) { return std::isspace(c) != 0; }),
               text.end());
    removeInvisible(text);
    return text;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string difference(const std::string& asked, const std::string& mapped) {
    if (asked.empty() || mapped.empty()) {
        return mapped.empty() ? "mapped without a class" : kOtherClass;
    }
    if (asked == withoutWhiteSpace(mapped)) {
        return "white space in the file";
    }
    if (lowerCase(asked) == lowerCase(mapped)) {
        return "letter case";
    }
    return lowerCase(asked) == lowerCase(withoutWhiteSpace(mapped)) ? "letter case and white space"
                                                                    : kOtherClass;
}

std::string classTextOf(const dolq::MoClass& moClass, const std::string& object) {
    const std::string name = inQuotes(object.substr(moClass.begin));
    return (moClass.hasEqual ? inQuotes(moClass.name) + ", before the '=' of "
                             : "none, for there is no '=' in ") +
           (moClass.hasComma ? "the last relative name " + name : name + ", which has no comma");
}

/// Looks the fault up as an adapter does: only both, fault id and class, find a mapping.
void lookUp(const Mappings& mappings, Explanation& explanation) {
    const std::uint32_t faultId = explanation.faultId;
    const std::string& moClass = explanation.moClass.name;
    std::vector<NearMiss>& misses = explanation.nearMisses;
    for (auto each = mappings.lower_bound({faultId, ""});
         each != mappings.end() && each->first.first == faultId; ++each) {
        if (each->first.second == moClass) {
            explanation.found = &each->second;
        } else {
            misses.push_back({&each->second.back(), difference(moClass, each->first.second)});
        }
    }
    std::stable_partition(misses.begin(), misses.end(),
                          [](const NearMiss& near) { return near.difference != kOtherClass; });
}

/// The mappings that the checker finds lost in lines that name the fault: an element misspelt or
/// skipped, a class that never matches.
std::vector<std::string> mistakesAbout(std::uint32_t faultId, const Discovery& discovery) {
    const std::regex number("(^|[^0-9])" + std::to_string(faultId) + "([^0-9]|$)");
    std::vector<std::string> texts;
    for (const std::string& path : discovery.mappingFiles) {
        MappingFileChecker checker;
        checker.check(path);
        std::ifstream file(path);
        std::string line;
        int lines = 0;
        for (const Finding& finding : checker.findings()) { // by line
            while (lines < finding.position.line && std::getline(file, line)) {
                ++lines;
            }
            if (finding.severity == Severity::Error && finding.rule != std::string("duplicate") &&
                lines == finding.position.line && std::regex_search(line, number)) {
                texts.push_back(positionText(finding.position) + ": " + finding.message);
            }
        }
    }
    return texts;
}

std::string otherClassesText(const Explanation& explanation) {
    std::vector<std::string> classes;
    for (const NearMiss& near : explanation.nearMisses) {
        classes.push_back(inQuotes(near.mapping->moClass) +
                          (near.difference == kOtherClass ? "" : " (" + near.difference + ")"));
    }
    return "the fault is mapped for " + joined(classes) +
           (explanation.moClass.name.empty() ? ", but the object has no class"
                                             : ", not for " + inQuotes(explanation.moClass.name));
}

void addMappingObstacles(const Discovery& discovery, const Inventory& inventory,
                         Explanation& explanation) {
    std::vector<std::string>& obstacles = explanation.obstacles;
    const std::string whyNone = printable(whyNoMappingFile(discovery));
    if (!discovery.mappingFiles.empty()) {
        obstacles = mistakesAbout(explanation.faultId, discovery);
    } else {
        obstacles = {whyNone};
    }
    if (!explanation.nearMisses.empty()) {
        obstacles.push_back(otherClassesText(explanation));
    }
    for (const UnreadableFile& file : inventory.unreadable) {
        obstacles.push_back(positionText(file.position) + " gives no mapping: " + file.reason);
    }
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        obstacles.push_back(printable(failureText(failure)));
    }
    if (!discovery.mappingFiles.empty() && explanation.nearMisses.empty()) {
        obstacles.push_back("no mapping file of " + printable(identityText(discovery.identity)) +
                            " maps the fault");
    }
}

void addIdentityCondition(Explanation& explanation) {
    std::vector<std::string> missing;
    for (const char* const variable : {"SYSTEM_UUID", "COMPUTE_NAME"}) {
        const char* const value = common::environment(variable, nullptr);
        if (value == nullptr || *value == '\0') {
            missing.push_back(variable +
                              std::string(value != nullptr ? " is empty" : " is not set"));
        }
    }
    if (!missing.empty()) {
        explanation.conditions.push_back(
            "only if the program names its system and compute node itself: " +
            joined(missing, " and "));
    }
}

} // namespace

std::string Explanation::answer() const {
    return "Fault " + std::to_string(faultId) + " on " + inQuotes(object) + ": a raise would " +
           (!obstacles.empty() ? "not be sent: " + obstacles.front()
                               : "go out as alarm " + alarmText(found->back().minorType)) +
           (!obstacles.empty() || conditions.empty() ? ""
                                                     : ", but " + joined(conditions, "; and ")) +
           '.';
}

Explanation explain(std::uint32_t faultId, const std::string& object, const Discovery& discovery,
                    const Inventory& inventory, bool identityGiven) {
    Explanation explanation{faultId, object, dolq::parseMoClass(object), {}, nullptr, {}, {}, {}};
    explanation.classText = classTextOf(explanation.moClass, object);
    lookUp(inventory.mappings, explanation);
    if (explanation.found == nullptr) {
        addMappingObstacles(discovery, inventory, explanation);
    }
    if (!identityGiven) {
        addIdentityCondition(explanation);
    }
    return explanation;
}

} // namespace dolqctl
