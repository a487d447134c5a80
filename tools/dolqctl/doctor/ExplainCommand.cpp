#include <string>
#include <vector>

#include <saAis.h>

#include "Commands.h"
#include "Output.h"
#include "adapter/MoClass.h"
#include "doctor/Checks.h"

namespace dolqctl {

namespace {

constexpr char kMapping[] = "mapping";
constexpr char kDropped[] = "the alarm is dropped";

/// The mapping that is used, and the mistakes in its element.
void checkUsed(Diagnosis& diagnosis, const std::vector<Mapping>& history,
               const std::vector<Finding>& findings) {
    const Mapping& used = history.back();
    const std::string place = positionText(used.position);
    diagnosis.ok(kMapping, "alarm " + alarmText(used.minorType) + " at " + place);
    for (const Finding& each : findings) {
        if (each.element != nullptr && positionText(each.element->position) == place &&
            each.isError()) {
            diagnosis.warn(kMapping, positionText(each.position) + ": " + each.message,
                           "it may be another alarm than what is meant", "correct the element");
        }
    }
}

/// Why nothing maps the fault for this class, as far as the mapping files that are read say it.
void checkUnmapped(Diagnosis& diagnosis, std::uint32_t faultId, const std::string& moClass,
                   const Inventory& inventory) {
    std::vector<std::string> others;
    for (auto each = inventory.mappings.lower_bound({faultId, ""});
         each != inventory.mappings.end() && each->first.first == faultId; ++each) {
        const std::string& other = each->first.second;
        others.push_back((other.empty() ? "objects without a class" : inQuotes(other)) + " at " +
                         positionText(each->second.back().position));
    }
    const std::string odd = lookOf(moClass).beyondAscii;
    diagnosis.fail(kMapping,
                   others.empty() ? "no mapping file that is read maps the fault"
                                  : "the fault is mapped for " + joined(others) +
                                        (moClass.empty() ? ", but the object has no class"
                                                         : ", not for " + inQuotes(moClass)) +
                                        (odd.empty() ? "" : ", which holds " + odd),
                   kDropped,
                   "map it; see also 'dolqctl mappings' and 'dolqctl check --discovered'");
    for (const Finding& each : inventory.findings) {
        if (each.isError() && each.isAbout(faultId, others.empty() ? "" : moClass)) {
            diagnosis.fail(kMapping, positionText(each.position) + ": " + each.message, kDropped,
                           "correct the element");
        }
    }
}

/// What the alarm depends on, or what it is like; empty when all is as it should be.
std::string reservations(const Diagnosis& diagnosis) {
    std::vector<std::string> texts;
    for (const Observation& each : diagnosis.observations()) {
        if (each.status > Observation::Status::Note) {
            texts.push_back(each.check + ": " + each.finding + ": " + each.meaning);
        }
    }
    return texts.empty() ? "" : ", but " + joined(texts, "; and ");
}

} // namespace

int runExplain(const Arguments& arguments) {
    const Discovery discovery = discover();
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const dolq::MoClass moClass = dolq::parseMoClass(arguments.object);
    const auto found = inventory.mappings.find({arguments.faultId, moClass.name});
    const bool isMapped = found != inventory.mappings.end();
    Diagnosis diagnosis;
    // What fails here stops some alarms, not all.
    checkCorrelationService(diagnosis);
    checkVariables(diagnosis);
    if (constexpr std::size_t kLongest = SA_MAX_NAME_LENGTH - 1;
        arguments.object.size() > kLongest) {
        diagnosis.warn("object",
                       "cut to the first " + std::to_string(kLongest) + " of its " +
                           std::to_string(arguments.object.size()) + " bytes",
                       "another object is sent", "shorten it");
    }
    if (isMapped) {
        checkLoadModule(diagnosis, discovery, inventory);
        checkUsed(diagnosis, found->second, inventory.findings);
    }
    const std::size_t stopNone = diagnosis.failures();
    // And here, each.
    const bool isAnswered = checkNtfService(diagnosis);
    checkParts(diagnosis);
    if (!isMapped) {
        if (!discovery.mappingFiles.empty()) {
            checkUnmapped(diagnosis, arguments.faultId, moClass.name, inventory);
        }
        checkLoadModule(diagnosis, discovery, inventory);
    }
    const bool isSent = diagnosis.failures() == stopNone;
    const Observation worst = diagnosis.observations().back();
    checkProgram(diagnosis, arguments.pid, discovery);
    diagnosis.print(arguments,
                    "Fault " + std::to_string(arguments.faultId) + " on " +
                        inQuotes(arguments.object) + ": a raise would " +
                        (isSent ? "go out as alarm " + alarmText(found->second.back().minorType) +
                                      reservations(diagnosis)
                                : "not be sent: " + worst.check + ": " + worst.finding));
    return !isAnswered                                                          ? kError
           : diagnosis.observations().back().status > Observation::Status::Note ? kFindings
                                                                                : kFine;
}

} // namespace dolqctl
