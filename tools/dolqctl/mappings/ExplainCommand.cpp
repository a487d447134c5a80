#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <saAis.h>

#include "Commands.h"
#include "Diagnosis.h"
#include "MappingFiles.h"
#include "Output.h"
#include "adapter/MoClass.h"
#include "mappings/Discovery.h"

namespace dolqctl {

namespace {

using History = std::vector<Mapping>; // of one fault and class; the last one is used

constexpr char kMapping[] = "mapping";

std::string lineText(const FilePosition& position) {
    return positionText({position.file, position.line});
}

std::string placeText(const Mapping& mapping) {
    return alarmText(mapping.minorType) + " at " + lineText(mapping.position);
}

/// The class, and what becomes of a text that is too long.
void checkObject(Diagnosis& diagnosis, const std::string& object, const dolq::MoClass& moClass) {
    diagnosis.ok("class", (moClass.hasEqual ? inQuotes(moClass.name) + ", before the '=' of "
                                            : "none, for there is no '=' in ") +
                              inQuotes(shortened(object.substr(object.rfind(',') + 1))));
    constexpr std::size_t kLongest = SA_MAX_NAME_LENGTH - 1;
    if (object.size() > kLongest) {
        const std::string sent = object.substr(0, kLongest);
        const dolq::MoClass cut = dolq::parseMoClass(sent);
        diagnosis.warn("object",
                       "another one is sent, cut to the first " + std::to_string(kLongest) +
                           " of its " + std::to_string(object.size()) + " bytes, up to " +
                           inQuotes(shortened(sent.substr(sent.rfind(',') + 1))) +
                           (cut.hasEqual ? "" : ", which has no class"),
                       "shorten it; the mapping is that of the whole object");
    }
}

/// Mistakes in the element that is used, and in others that name the fault and the class; `moClass`
/// is empty for any.
void checkElements(Diagnosis& diagnosis, std::uint32_t faultId, const std::string& moClass,
                   const History* used, const std::vector<Finding>& findings) {
    const std::string usedAt = used == nullptr ? "" : positionText(used->back().position);
    for (const Finding& each : findings) {
        const std::string at = positionText(each.position);
        const bool isAbout = used == nullptr ? each.isAbout(faultId, moClass)
                                             : each.element != nullptr &&
                                                   positionText(each.element->position) == usedAt;
        if (isAbout && used == nullptr && each.severity() == Severity::Error) {
            diagnosis.fail(kMapping, at + ": " + each.message(), "correct the element");
        } else if (isAbout && used != nullptr &&
                   (each.severity() == Severity::Error || (!moClass.empty() && !each.other))) {
            diagnosis.warn(kMapping, at + ": " + each.message(), "correct the element");
        }
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
        others.insert(isNear ? others.begin() : others.end(),
                      (other.empty() ? "objects without a class" : inQuotes(other)) +
                          (isNear ? " (in " + lineText(each->second.back().position) +
                                        "; mind letter case and white space)"
                                  : ""));
    }
    const std::string odd = characterBeyondAscii(moClass);
    checkElements(diagnosis, faultId, used == nullptr && others.empty() ? "" : moClass, used,
                  inventory.findings);
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
                                            : ", not for " + inQuotes(moClass)) +
                           (odd.empty() ? "" : ", which holds " + odd),
                       "correct the class of the mapping or of the object; see 'dolqctl mappings'");
    }
    return used;
}

/// What the alarm depends on, or what it is like; empty when all is as it should be.
std::string reservations(const Diagnosis& diagnosis) {
    std::vector<std::string> texts;
    for (const Observation& each : diagnosis.observations()) {
        if (each.status != Observation::Status::Ok) {
            const bool isFailure = each.status == Observation::Status::Failed;
            texts.push_back(each.text() + (isFailure ? " (" + each.advice + ')' : ""));
        }
    }
    return texts.empty() ? "" : ", but " + joined(texts, "; and ");
}

} // namespace

int runExplain(const ExplainArguments& arguments) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const dolq::MoClass moClass = dolq::parseMoClass(arguments.object);
    Diagnosis diagnosis;
    checkObject(diagnosis, arguments.object, moClass);
    const History* const used = lookUp(diagnosis, arguments.faultId, moClass.name, inventory);
    if (used == nullptr) {
        checkMappings(diagnosis, discovery, inventory);
    }
    if (used == nullptr && diagnosis.failures() == 0) {
        std::vector<std::string> doubts = discovery.problems; // the nearest first
        doubts.insert(doubts.end(), discovery.doubts.begin(), discovery.doubts.end());
        if (std::any_of(inventory.findings.begin(), inventory.findings.end(),
                        [](const auto& each) { return each.severity() == Severity::Error; })) {
            doubts.emplace_back("the errors that 'dolqctl check --discovered' finds");
        }
        diagnosis.fail(kMapping,
                       "no mapping file of the load module maps the fault" +
                           (doubts.empty() ? "" : ", but see " + doubts.front()),
                       "map it, or correct what the other checks find");
    }
    checkNtfService(diagnosis);
    checkLibrary(diagnosis);
    // What fails from here on stops some alarms, not all.
    const bool isSent = diagnosis.failures() == 0;
    if (used != nullptr) {
        checkLoadModule(diagnosis, discovery, inventory);
    }
    if (!arguments.identityGiven) {
        checkReporter(diagnosis);
    }
    checkCorrelationService(diagnosis);
    const Observation& worst = diagnosis.observations().front();
    const std::string sentence =
        "Fault " + std::to_string(arguments.faultId) + " on " +
        inQuotes(shortened(arguments.object)) + ": a raise would " +
        (isSent ? "go out as alarm " + alarmText(used->back().minorType) + reservations(diagnosis)
                : "not be sent: " + (used == nullptr ? worst.finding : worst.text()));
    printWrapped(sentence);
    printLine();
    diagnosis.print("The same goes for a cease, but it needs no system, compute node or event.");
    return worst.status == Observation::Status::Ok ? kFine : kFindings;
}

} // namespace dolqctl
