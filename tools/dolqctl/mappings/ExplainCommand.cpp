#include <algorithm>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <saAis.h>

#include "Commands.h"
#include "Output.h"
#include "adapter/MoClass.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/Findings.h"
#include "mappings/MappingFiles.h"

namespace dolqctl {

namespace {

using History = std::vector<Mapping>; // of one fault and class; the last one is used

constexpr char kMapping[] = "mapping";

/// Failures with which some alarms go out all the same; others stop every one.
constexpr struct {
    const char* check;
    const char* which;
} kConditions[] = {
    {"SYSTEM_UUID", "only if the program names its system itself: SYSTEM_UUID is "},
    {"COMPUTE_NAME", "only if the program names its compute node itself: COMPUTE_NAME is "},
    {"correlation service", "only without event ids: correlation service: "},
    {"mapping files", ""}};

std::string placeText(const Mapping& mapping) {
    return alarmText(mapping.minorType) + " (minor type " + std::to_string(mapping.minorType) +
           ") at " + lineText(mapping.position);
}

/// The class, and what becomes of a text that is too long.
void checkObject(Diagnosis& diagnosis, const std::string& object, const dolq::MoClass& moClass) {
    diagnosis.ok("class", (moClass.hasEqual ? inQuotes(moClass.name) + ", before the '=' of "
                                            : "none, for there is no '=' in ") +
                              inShortQuotes(object.substr(moClass.begin)));
    constexpr std::size_t kLongest = SA_MAX_NAME_LENGTH - 1;
    if (object.size() > kLongest) {
        const std::string sent = object.substr(0, kLongest);
        const dolq::MoClass cut = dolq::parseMoClass(sent);
        diagnosis.warn("object",
                       "another one is sent, cut to the first " + std::to_string(kLongest) +
                           " of its " + std::to_string(object.size()) + " bytes, up to " +
                           inShortQuotes(sent.substr(cut.begin)) +
                           (cut.hasEqual ? "" : ", which has no class"),
                       "shorten it; the mapping is that of the whole object");
    }
}

/// Looks the fault up as an adapter does: only both, fault id and class, find a mapping.
const History* lookUp(Diagnosis& diagnosis, std::uint32_t faultId, const std::string& moClass,
                      const Inventory& inventory) {
    const History* used = nullptr;
    std::vector<std::string> others;
    const auto from = inventory.mappings.lower_bound({faultId, ""});
    for (auto each = from; each != inventory.mappings.end() && each->first.first == faultId;
         ++each) {
        const std::string& other = each->first.second;
        if (other == moClass) {
            used = &each->second;
            continue;
        }
        const bool isNear = !moClass.empty() && folded(other) == folded(moClass);
        const std::string place = lineText(each->second.back().position);
        others.insert(isNear ? others.begin() : others.end(),
                      (other.empty() ? "objects without a class" : inQuotes(other)) +
                          (!isNear                          ? ""
                           : other.size() == moClass.size() ? " (letter case, in " + place + ')'
                                                            : " (white space, in " + place + ')'));
    }
    // Elements that name the fault, and the class if any mapping of the fault was read.
    const std::regex number("(^|[^0-9])" + std::to_string(faultId) + "([^0-9]|$)");
    const std::string meant = used == nullptr && others.empty() ? "" : folded(moClass);
    for (const Finding& each : inventory.findings) {
        const bool isAbout = !each.other && std::regex_search(each.about, number) &&
                             folded(each.about).find(meant) != std::string::npos;
        const std::string text = positionText(each.position) + ": " + each.message;
        if (isAbout && used == nullptr && each.severity == Severity::Error) {
            diagnosis.fail(kMapping, text, "correct the element");
        } else if (isAbout && used != nullptr &&
                   !(each.severity == Severity::Warning && moClass.empty())) {
            diagnosis.warn(kMapping, text, "correct the element");
        }
    }
    if (used != nullptr) {
        std::string text = "alarm " + placeText(used->back());
        for (auto each = std::next(used->rbegin()); each != used->rend(); ++each) {
            text += ", in place of " + placeText(*each);
        }
        diagnosis.ok(kMapping, text);
    } else if (!others.empty()) {
        diagnosis.fail(kMapping,
                       "the fault is mapped for " + joined(others) +
                           (moClass.empty() ? ", but the object has no class"
                                            : ", not for " + inQuotes(moClass)),
                       "correct the class of the mapping or of the object; see 'dolqctl mappings'");
    }
    return used;
}

/// The first sentence: whether a raise would go out, and as what or why not.
std::string answer(const Diagnosis& diagnosis, const History* used) {
    std::vector<std::string> conditions;
    for (const Observation& each : diagnosis.observations()) { // the worst first
        const auto* const condition =
            std::find_if(std::begin(kConditions), std::end(kConditions),
                         [&](const auto& known) { return each.check == known.check; });
        const bool isFailure = each.status == Observation::Status::Failed;
        if (isFailure && used == nullptr) {
            return "not be sent: " + each.finding;
        }
        if (isFailure && condition == std::end(kConditions)) {
            return "not be sent: " + each.text();
        }
        if (each.status != Observation::Status::Ok) {
            conditions.push_back(isFailure ? condition->which + each.finding : each.text());
        }
    }
    return "go out as alarm " + alarmText(used->back().minorType) +
           (conditions.empty() ? "" : ", but " + joined(conditions, "; and "));
}

} // namespace

int runExplain(const ExplainArguments& arguments, Output& output) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const dolq::MoClass moClass = dolq::parseMoClass(arguments.object);
    Diagnosis diagnosis;
    checkObject(diagnosis, arguments.object, moClass);
    const History* const used = lookUp(diagnosis, arguments.faultId, moClass.name, inventory);
    (used != nullptr ? checkLoadModule : checkMappings)(diagnosis, discovery, inventory);
    if (used == nullptr && diagnosis.failures() == 0) {
        diagnosis.fail(kMapping,
                       discovery.problems.empty()
                           ? "no mapping file of the load module maps the fault"
                           : "no mapping file maps the fault, but not all is read: " +
                                 discovery.problems.front(),
                       "map it, or correct what the other checks find");
    }
    if (!arguments.identityGiven) {
        checkReporter(diagnosis);
    }
    checkNtfService(diagnosis);
    checkCorrelationService(diagnosis);
    checkLibrary(diagnosis);
    const std::string sentence = "Fault " + std::to_string(arguments.faultId) + " on " +
                                 inShortQuotes(arguments.object) + ": a raise would " +
                                 answer(diagnosis, used);
    if (arguments.json) {
        nlohmann::ordered_json json{{"answer", sentence}, {"mapping", nullptr}};
        if (used != nullptr) {
            json["mapping"] = effectiveJson(*used);
        }
        json.update(nlohmann::ordered_json(diagnosis));
        output.print(json);
    } else {
        output.wrapped(output.styled(styleOf(diagnosis.worst()), sentence));
        output.line();
        diagnosis.print("The same goes for a cease, but it needs no system, compute node or event.",
                        output);
    }
    return diagnosis.worst() == Observation::Status::Ok ? kFine : kFindings;
}

} // namespace dolqctl
