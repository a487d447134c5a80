#include "Diagnosis.h"
#include "MappingFiles.h"
#include "Output.h"
#include "SharedObject.h"
#include "mappings/Discovery.h"

namespace dolqctl {

namespace {

constexpr char kHandler[] = "load-module handler";
constexpr char kFiles[] = "mapping files";

} // namespace

void checkLoadModule(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory) {
    constexpr char kLoadModule[] = "load module";
    const std::string file = SharedObject(kLoadModuleLibrary).file();
    const std::string whyNone = discovery.whyNoMappingFile();
    if (discovery.problems.empty()) {
        diagnosis.ok(kHandler, "answers, from " + file);
    }
    for (const std::string& problem : discovery.problems) {
        if (whyNone.find(problem) == whyNone.npos) { // told below
            diagnosis.warn(kHandler, problem, "correct what the handler reads; it is " + file);
        }
    }
    if (whyNone.empty()) {
        diagnosis.ok(kLoadModule, quoted(discovery.identity) + ", with " +
                                      counted(discovery.mappingFiles.size(), "mapping file"));
    } else {
        diagnosis.fail(kLoadModule, whyNone,
                       "correct ZBN_NO and ZBN_REV or the manifest, or install the load module");
    }
    for (const Finding& finding : inventory.findings) {
        if (finding.costsTheFile()) {
            diagnosis.fail(kFiles, positionText(finding.position) + ": " + finding.message(),
                           "correct the file: none of its mappings is used");
        }
    }
}

void checkMappings(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory) {
    checkLoadModule(diagnosis, discovery, inventory);
    for (const std::string& doubt : discovery.doubts) {
        diagnosis.warn(kHandler, doubt, "see 'dolqctl check MANIFEST'");
    }
    if (discovery.mappingFiles.empty()) {
        return;
    }
    std::size_t errors = 0;
    for (const Finding& finding : inventory.findings) {
        errors += finding.severity() == Severity::Error ? 1 + finding.more : 0;
    }
    const std::string count = counted(inventory.mappings.size(), "mapping");
    if (errors > 0) {
        diagnosis.warn(kFiles, count + ", " + counted(errors, "error"),
                       "see 'dolqctl check --discovered'");
    } else {
        diagnosis.ok(kFiles, count);
    }
}

} // namespace dolqctl
