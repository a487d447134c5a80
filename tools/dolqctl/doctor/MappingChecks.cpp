#include "Library.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/Inventory.h"

namespace dolqctl {

namespace {

void checkHandler(Diagnosis& diagnosis, const Discovery& discovery) {
    constexpr char kHandler[] = "load-module handler";
    const std::string file = Library(kLoadModuleLibrary).file();
    if (discovery.failedCategories.empty()) {
        diagnosis.ok(kHandler, "answers, from " + file);
    }
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        diagnosis.warn(kHandler, failureText(failure),
                       "correct what the handler reads; it is " + file);
    }
}

void checkFiles(Diagnosis& diagnosis, const Inventory& inventory) {
    constexpr char kMappings[] = "mapping files";
    const std::string count = "mappings: " + std::to_string(inventory.mappings.size());
    for (const UnreadableFile& file : inventory.unreadable) {
        diagnosis.warn(kMappings, positionText(file.position) + " gives no mapping: " + file.reason,
                       "correct the file: none of its mappings is used");
    }
    if (inventory.mappings.empty()) {
        diagnosis.fail(kMappings, "give no mapping at all",
                       "without one every alarm is dropped: give the load module a mapping file");
    } else if (!inventory.skipped.empty()) {
        diagnosis.warn(kMappings,
                       count + "; skipped elements: " + std::to_string(inventory.skipped.size()),
                       "see 'dolqctl check --discovered'");
    } else {
        diagnosis.ok(kMappings, count);
    }
}

} // namespace

void checkMappings(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory) {
    constexpr char kLoadModule[] = "load module";
    checkHandler(diagnosis, discovery);
    if (const std::string why = whyNoMappingFile(discovery); !why.empty()) {
        diagnosis.fail(kLoadModule, why,
                       "correct ZBN_NO and ZBN_REV, or install the load module with its mappings");
        return;
    }
    diagnosis.ok(kLoadModule, identityText(discovery.identity) + " is found; mapping files: " +
                                  std::to_string(discovery.mappingFiles.size()));
    checkFiles(diagnosis, inventory);
}

void checkMappings(Diagnosis& diagnosis) {
    const Discovery discovery =
        discover({common::environment("ZBN_NO"), common::environment("ZBN_REV")});
    checkMappings(diagnosis, discovery, readMappingFiles(discovery.mappingFiles));
}

} // namespace dolqctl
