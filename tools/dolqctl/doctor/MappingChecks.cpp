#include "Library.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/MappingFiles.h"

namespace dolqctl {

void checkMappings(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory) {
    constexpr char kHandler[] = "load-module handler";
    constexpr char kLoadModule[] = "load module";
    constexpr char kMappings[] = "mapping files";
    const std::string file = Library(kLoadModuleLibrary).file();
    if (discovery.problems.empty()) {
        diagnosis.ok(kHandler, "answers, from " + file);
    }
    const std::string whyNone = discovery.whyNoMappingFile();
    for (const std::string& problem : discovery.problems) {
        if (whyNone.find(problem) == whyNone.npos) { // told below
            diagnosis.warn(kHandler, problem, "correct what the handler reads; it is " + file);
        }
    }
    if (!whyNone.empty()) {
        diagnosis.fail(kLoadModule, whyNone,
                       discovery.problems.empty()
                           ? "correct ZBN_NO and ZBN_REV, or install the load module"
                           : "correct the manifest, or ZBN_NO and ZBN_REV");
        return;
    }
    const Identity& identity = discovery.identity;
    diagnosis.ok(kLoadModule,
                 identity.productNumber + ' ' + identity.revision +
                     " is found; mapping files: " + std::to_string(discovery.mappingFiles.size()));
    const std::size_t mappings = inventory.mappings.size();
    std::size_t errors = 0;
    for (const Finding& finding : inventory.findings) {
        errors += finding.severity == Severity::Error ? 1 : 0;
        if (costsTheFile(finding)) {
            diagnosis.fail(kMappings, positionText(finding.position) + ": " + finding.message,
                           "correct the file: none of its mappings is used");
        }
    }
    if (mappings == 0) {
        diagnosis.fail(kMappings, "give no mapping at all",
                       "without one every alarm is dropped: give the load module a mapping file");
    } else if (errors > 0) {
        diagnosis.warn(kMappings,
                       "mappings: " + std::to_string(mappings) +
                           "; errors: " + std::to_string(errors),
                       "see 'dolqctl check --discovered'");
    } else {
        diagnosis.ok(kMappings, "mappings: " + std::to_string(mappings));
    }
}

void checkMappings(Diagnosis& diagnosis) {
    const Discovery discovery =
        discover({common::environment("ZBN_NO"), common::environment("ZBN_REV")});
    checkMappings(diagnosis, discovery, readMappingFiles(discovery.mappingFiles));
}

} // namespace dolqctl
