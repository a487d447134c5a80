#include "mappings/Explanation.h"

#include <algorithm>
#include <cctype>

#include "Output.h"
#include "common/Environment.h"
#include "mapping/dolqNotificationMapImpl.h"
#include "mappings/MappingFileChecker.h"

namespace dolqctl {

namespace {

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
    if (asked.empty()) {
        return "the object has no class";
    }
    if (mapped.empty()) {
        return "mapped without a class";
    }
    if (asked == withoutWhiteSpace(mapped)) {
        return "white space in the file";
    }
    if (lowerCase(asked) == lowerCase(mapped)) {
        return "letter case";
    }
    return lowerCase(asked) == lowerCase(withoutWhiteSpace(mapped)) ? "letter case and white space"
                                                                    : "other class";
}

/// Looks the fault up as an adapter does, in the very table and by the very lookup.
void lookUp(const Inventory& inventory, Explanation& explanation) {
    const std::uint32_t faultId = explanation.faultId;
    const std::string& moClass = explanation.moClass.name;
    std::uint32_t minorType = 0;
    const bool isMapped =
        dolq::NotificationMapV2(inventory.table).getMinorType(faultId, minorType, moClass);
    for (const EffectiveMapping& effective : inventory.effective) {
        if (effective.mapping.faultId != faultId) {
            continue;
        }
        if (isMapped && effective.mapping.moClass == moClass) {
            explanation.found = &effective;
        } else {
            explanation.nearMisses.push_back(
                {&effective, difference(moClass, effective.mapping.moClass)});
        }
    }
}

void addIdentityObstacle(const char* variable, Explanation& explanation) {
    const char* const value = common::environment(variable, nullptr);
    if (value == nullptr || *value == '\0') {
        explanation.obstacles.push_back(
            std::string(variable) + (value != nullptr ? " is empty" : " is not set") +
            ": the alarm is refused unless the program names its system and compute node itself");
    }
}

} // namespace

Explanation explain(std::uint32_t faultId, const std::string& object, const Inventory& inventory,
                    const std::vector<std::string>& problems) {
    Explanation explanation{faultId, object, dolq::parseMoClass(object), {}, nullptr, {}, {}};
    explanation.relativeName = object.substr(explanation.moClass.begin);
    lookUp(inventory, explanation);
    if (explanation.found == nullptr) {
        explanation.obstacles.push_back(
            "fault " + std::to_string(faultId) + " is not mapped " +
            (explanation.moClass.name.empty()
                 ? "without a class"
                 : "for the class " + inQuotes(explanation.moClass.name)));
        explanation.obstacles.insert(explanation.obstacles.end(), problems.begin(), problems.end());
        for (const FilePosition& position : inventory.skipped) {
            explanation.obstacles.push_back(lineText(position) +
                                            ": an element is skipped, see 'dolqctl check'");
        }
    }
    addIdentityObstacle("SYSTEM_UUID", explanation);
    addIdentityObstacle("COMPUTE_NAME", explanation);
    return explanation;
}

} // namespace dolqctl
