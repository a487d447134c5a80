#include "mappings/Discovery.h"

#include <filesystem>
#include <set>
#include <system_error>

#include <Velk.h>

#include "MappingFiles.h"
#include "Output.h"
#include "SharedObject.h"
#include "common/Environment.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

namespace {

namespace fs = std::filesystem;

std::string orEmpty(const char* text) { return text != nullptr ? text : ""; }

/// Adds the load modules of one category, and the mapping files of the one looked for.
void addCategory(const std::string& category, Discovery& discovery) {
    std::string writableCategory = category;
    Velk_lm_list list{};
    const int result = Velk_get_lms(nullptr, writableCategory.data(), &list);
    if (result != 0) {
        discovery.problems.push_back("the load-module handler answers error " +
                                     std::to_string(result) + " for the category '" + category +
                                     "'");
        return;
    }
    for (std::size_t i = 0; i < list.count; ++i) {
        const Velk_lm& module = list.lms[i];
        const Identity& found = discovery.loadModules.emplace_back(
            Identity{orEmpty(module.productNumber), orEmpty(module.revision)});
        if (found.productNumber != discovery.identity.productNumber ||
            found.revision != discovery.identity.revision) {
            continue;
        }
        discovery.isFound = true;
        for (std::size_t k = 0; k < module.fileCount; ++k) {
            if (orEmpty(module.files[k].tag) == common::kMappingFileTag) {
                discovery.mappingFiles.push_back(orEmpty(module.files[k].path));
            }
        }
    }
    Velk_free_buffers(&list);
}

/// Of the folder that the embedded handler reads, in which a missing file is an empty category.
void checkManifests(Discovery& discovery) {
    const std::string chosen = common::trustedEnvironment("VELK_MANIFEST_DIR");
    const fs::path folder = chosen.empty() ? common::kDefaultManifestDirectory : chosen;
    const std::string where = "manifests are central.xml, local.xml and dynamic.xml in " +
                              inQuotes(folder.string()) +
                              (chosen.empty() ? " (VELK_MANIFEST_DIR is not set)" : "");
    std::vector<std::string> problems;
    std::error_code error;
    bool isEmpty = true;
    const fs::directory_iterator entries(folder, error);
    for (const fs::path& path : std::set<fs::path>(begin(entries), end(entries))) {
        const std::string name = path.filename().string();
        for (const char* const known : {"central.xml", "local.xml", "dynamic.xml"}) {
            if (name != known) {
                if (isMisspelt(name, known)) {
                    problems.push_back(inQuotes(name) + " is not read: " + where);
                }
                continue;
            }
            isEmpty = false;
            for (const Finding& finding : findManifestMistakes(path.string())) {
                if (finding.name() != std::string("missing-file")) { // told when it is read
                    (finding.severity() == Severity::Error ? problems : discovery.doubts)
                        .push_back(positionText(finding.position) + ": " + finding.message());
                }
            }
        }
    }
    if (isEmpty && problems.empty()) {
        problems.push_back(where +
                           (error ? ": " + error.message() : ", where there is none of them"));
    }
    if (!problems.empty()) { // they say more than error codes
        discovery.problems = std::move(problems);
    }
}

} // namespace

std::string quoted(const Identity& identity) {
    return inQuotes(identity.productNumber) + ' ' + inQuotes(identity.revision);
}

Discovery discover(const Identity& identity) {
    Discovery discovery;
    discovery.identity = identity;
    for (const char* const category : common::kLoadModuleCategories) {
        addCategory(category, discovery);
    }
    if (SharedObject(kLoadModuleLibrary)
            .contains("VELK_MANIFEST_DIR")) { // no other handler knows it
        checkManifests(discovery);
    }
    return discovery;
}

std::string Discovery::whyNoMappingFile() const {
    if (!mappingFiles.empty()) {
        return {};
    }
    const std::string reason = problems.empty() ? "" : ": " + problems.front();
    if (isFound) {
        return "the load module " + quoted(identity) + " has no file tagged alarm_mapping" + reason;
    }
    std::set<std::string> others; // of the product, perhaps written otherwise
    for (const Identity& each : loadModules) {
        if (folded(each.productNumber) == folded(identity.productNumber)) {
            others.insert(quoted(each));
        }
    }
    const bool isNamed = !identity.productNumber.empty() && !identity.revision.empty();
    return (isNamed ? "there is no load module " : "ZBN_NO and ZBN_REV name no load module: ") +
           quoted(identity) +
           (!others.empty() ? ", but " + joined(others)
            : isNamed       ? " among " + std::to_string(loadModules.size())
                            : "") +
           reason;
}

} // namespace dolqctl
