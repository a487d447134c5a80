#include <algorithm>
#include <cctype>
#include <set>

#include <Velk.h>

#include "Output.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/Inventory.h"

namespace dolqctl {

namespace {

constexpr char kLoadModule[] = "load module";
constexpr char kMappings[] = "mapping files";
constexpr char kHandler[] = "load-module handler";

/// Capitals and white space do not make a difference here.
std::string blurred(const std::string& value) {
    std::string letters;
    for (const char c : value) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

/// What is there in place of the load module: the nearest first.
std::string nearestMisses(const Discovery& discovery) {
    const Identity& identity = discovery.identity;
    std::set<std::string> revisions;
    std::set<std::string> similar;
    std::set<std::string> products;
    for (const Discovery::LoadModule& each : discovery.loadModules) {
        const Identity& other = each.identity;
        products.insert(other.productNumber);
        if (other.productNumber == identity.productNumber) {
            revisions.insert("'" + other.revision + "'");
        } else if (blurred(other.productNumber) == blurred(identity.productNumber)) {
            similar.insert("'" + other.productNumber + "'");
        }
    }
    if (!revisions.empty()) {
        return "the product is there in other revisions: " + joined(revisions);
    }
    if (!similar.empty()) {
        return "a product number is there that is nearly the same: " + joined(similar);
    }
    return "the products there are: " + joined(products);
}

void checkHandler(Diagnosis& diagnosis, const Discovery& discovery) {
    const std::string file = fileOf(&Velk_get_lms);
    if (discovery.failedCategories.empty()) {
        diagnosis.ok(kHandler, "answers, from " + file);
        return;
    }
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        diagnosis.warn(kHandler, failureText(failure),
                       "correct what the handler reads; it is " + file);
    }
}

bool checkLoadModule(Diagnosis& diagnosis, const Discovery& discovery) {
    const Identity& identity = discovery.identity;
    if (!discovery.isFound()) {
        diagnosis.fail(kLoadModule,
                       "there is no load module of product '" + identity.productNumber +
                           "', revision '" + identity.revision + "'",
                       discovery.loadModules.empty()
                           ? "install the load module: " + noLoadModulesText()
                           : "correct ZBN_NO and ZBN_REV, or install the load module: " +
                                 nearestMisses(discovery));
        return false;
    }
    diagnosis.ok(kLoadModule,
                 identity.productNumber + " " + identity.revision +
                     " is found; mapping files: " + std::to_string(discovery.mappingFiles.size()));
    return true;
}

void checkMappingFiles(Diagnosis& diagnosis, const Discovery& discovery) {
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const std::string count = "mappings: " + std::to_string(inventory.effective.size());
    for (const UnreadableFile& file : inventory.unreadable) {
        diagnosis.warn(kMappings, file.position.file + " is not read: " + file.reason,
                       "correct the file: none of its mappings is used");
    }
    if (inventory.effective.empty()) {
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

void checkMappings(Diagnosis& diagnosis) {
    const Discovery discovery =
        discover({common::environment("ZBN_NO"), common::environment("ZBN_REV")});
    checkHandler(diagnosis, discovery);
    if (checkLoadModule(diagnosis, discovery)) {
        checkMappingFiles(diagnosis, discovery);
    }
}

} // namespace dolqctl
