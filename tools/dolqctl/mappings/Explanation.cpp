#include "mappings/Explanation.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>

#include <saAis.h>

#include "Output.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
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

/// In quotes, without the middle of one that would fill a screen.
std::string shown(const std::string& name) {
    constexpr std::size_t kMost = 100;
    constexpr std::size_t kHalf = 40;
    return name.size() <= kMost ? inQuotes(name)
                                : inQuotes(name.substr(0, kHalf)) + "..." +
                                      inQuotes(name.substr(name.size() - kHalf));
}

std::string classTextOf(const dolq::MoClass& moClass, const std::string& object) {
    const std::string name = shown(object.substr(moClass.begin));
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
        const std::string& moClass = near.mapping->moClass;
        classes.push_back((moClass.empty() ? "objects without a class" : inQuotes(moClass)) +
                          (moClass.empty() || near.difference == kOtherClass
                               ? ""
                               : " (" + near.difference + ")"));
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

/// What the service is asked is what `doctor` asks it.
void addService(Explanation& explanation) {
    using Status = Observation::Status;
    Diagnosis service;
    checkNtfService(service);
    for (const Observation& each : service.observations()) {
        const std::string text = printable(each.check + ": " + each.finding);
        if (each.status == Status::Failed) {
            explanation.obstacles.push_back(text);
        } else if (each.status == Status::Warning) {
            explanation.conditions.push_back("that is not certain: " + text);
        }
    }
    Diagnosis correlation;
    checkCorrelationService(correlation);
    for (const Observation& each : correlation.observations()) {
        if (each.status != Status::Ok) {
            explanation.conditions.push_back((each.status == Status::Failed
                                                  ? "only without event ids: "
                                                  : "not with event ids: ") +
                                             printable(each.check + ": " + each.finding));
        }
    }
}

/// The mapping is that of the whole object, and the beginning of it is sent.
void addLengthCondition(Explanation& explanation) {
    constexpr std::size_t kLongest = SA_MAX_NAME_LENGTH - 1;
    const std::string& object = explanation.object;
    if (object.size() > kLongest) {
        const std::string sent = object.substr(0, kLongest);
        const dolq::MoClass cut = dolq::parseMoClass(sent);
        explanation.conditions.push_back(
            "for another object: only the first " + std::to_string(kLongest) + " of its " +
            std::to_string(object.size()) + " bytes are sent, up to " +
            shown(sent.substr(cut.begin)) +
            (cut.hasEqual ? " of class " + inQuotes(cut.name) : ", which has no class"));
    }
}

} // namespace

std::string Explanation::answer() const {
    const std::string start =
        "Fault " + std::to_string(faultId) + " on " + shown(object) + ": a raise would ";
    if (!obstacles.empty()) {
        return start + "not be sent: " + obstacles.front();
    }
    return start + "go out as alarm " + alarmText(found->back().minorType) +
           (conditions.empty() ? "" : ", but " + joined(conditions, "; and "));
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
    addLengthCondition(explanation);
    addService(explanation);
    return explanation;
}

} // namespace dolqctl
