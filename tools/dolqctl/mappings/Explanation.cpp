#include "mappings/Explanation.h"

#include <algorithm>
#include <regex>

#include <saAis.h>

#include "Output.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"

namespace dolqctl {

namespace {

/// In quotes, without the middle of one that would fill a screen.
std::string shown(const std::string& name) {
    constexpr std::size_t kMost = 100;
    constexpr std::size_t kHalf = 40;
    return name.size() <= kMost ? inQuotes(name)
                                : inQuotes(name.substr(0, kHalf)) + "..." +
                                      inQuotes(name.substr(name.size() - kHalf));
}

/// Looks the fault up as an adapter does: only both, fault id and class, find a mapping.
void lookUp(const Mappings& mappings, Explanation& explanation) {
    const std::string& moClass = explanation.moClass.name;
    std::vector<const Mapping*>& misses = explanation.nearMisses;
    for (auto each = mappings.lower_bound({explanation.faultId, ""});
         each != mappings.end() && each->first.first == explanation.faultId; ++each) {
        if (each->first.second == moClass) {
            explanation.found = &each->second;
        } else {
            misses.push_back(&each->second.back());
        }
    }
    std::stable_partition(misses.begin(), misses.end(), [&](const Mapping* near) {
        return folded(near->moClass) == folded(moClass);
    });
}

/// In elements that name the fault: misspelt, skipped, with a class that never matches. Of two
/// mappings for one fault and class none is missing.
std::vector<std::string> mistakesAbout(std::uint32_t faultId, const Inventory& inventory) {
    const std::regex number("(^|[^0-9])" + std::to_string(faultId) + "([^0-9]|$)");
    std::vector<std::string> texts;
    for (const Finding& finding : inventory.findings) {
        if (finding.severity == Severity::Error && !finding.other &&
            std::regex_search(finding.about, number)) {
            texts.push_back(positionText(finding.position) + ": " + finding.message);
        }
    }
    return texts;
}

std::string otherClassesText(const Explanation& explanation) {
    std::vector<std::string> classes;
    for (const Mapping* const near : explanation.nearMisses) {
        const bool isNear = folded(near->moClass) == folded(explanation.moClass.name);
        classes.push_back(
            near->moClass.empty()
                ? "objects without a class"
                : inQuotes(near->moClass) +
                      (isNear ? " (" + explanation.difference(near->moClass) + ")" : ""));
    }
    return "the fault is mapped for " + joined(classes) +
           (explanation.moClass.name.empty() ? ", but the object has no class"
                                             : ", not for " + inQuotes(explanation.moClass.name));
}

std::vector<std::string> mappingObstacles(const Explanation& explanation,
                                          const Discovery& discovery, const Inventory& inventory) {
    if (discovery.mappingFiles.empty()) {
        return {discovery.whyNoMappingFile()};
    }
    std::vector<std::string> obstacles = mistakesAbout(explanation.faultId, inventory);
    if (!explanation.nearMisses.empty()) {
        obstacles.push_back(otherClassesText(explanation));
    }
    for (const Finding& finding : inventory.findings) {
        if (costsTheFile(finding)) {
            obstacles.push_back(positionText(finding.position) + ": " + finding.message);
        }
    }
    obstacles.insert(obstacles.end(), discovery.problems.begin(), discovery.problems.end());
    if (explanation.nearMisses.empty()) {
        obstacles.emplace_back("no mapping file of the load module maps the fault");
    }
    return obstacles;
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
            explanation.conditions.push_back("doctor warns: " + text);
        }
    }
    Diagnosis correlation;
    checkCorrelationService(correlation);
    for (const Observation& each : correlation.observations()) {
        if (each.status != Status::Ok) {
            explanation.conditions.push_back((each.status == Status::Failed
                                                  ? "only without event ids: "
                                                  : "not as a secondary alarm: ") +
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

std::string Explanation::classText() const {
    const std::string name = shown(object.substr(moClass.begin));
    return (moClass.hasEqual ? inQuotes(moClass.name) + ", before the '=' of "
                             : "none, for there is no '=' in ") +
           (moClass.hasComma ? "the last relative name " + name : name + ", which has no comma");
}

std::string Explanation::difference(const std::string& other) const {
    return folded(other) != folded(moClass.name) ? "other class"
           : other.size() == moClass.name.size() ? "letter case"
                                                 : "white space";
}

Explanation explain(std::uint32_t faultId, const std::string& object, const Discovery& discovery,
                    const Inventory& inventory, bool identityGiven) {
    Explanation explanation{faultId, object, dolq::parseMoClass(object), nullptr, {}, {}, {}};
    lookUp(inventory.mappings, explanation);
    if (explanation.found == nullptr) {
        explanation.obstacles = mappingObstacles(explanation, discovery, inventory);
    }
    if (!identityGiven) {
        addIdentityCondition(explanation);
    }
    addLengthCondition(explanation);
    addService(explanation);
    return explanation;
}

} // namespace dolqctl
