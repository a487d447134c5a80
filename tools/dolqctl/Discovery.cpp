#include "Discovery.h"

#include <algorithm>

#include <Velk.h>

#include "Output.h"
#include "SharedObject.h"
#include "common/Environment.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

namespace {

constexpr std::size_t kMostNamed = 8; // of the load modules that there are

std::string orEmpty(const char* text) { return text != nullptr ? text : ""; }

/// Adds its mapping files, and a problem for each tag that is nearly the right one.
void addFiles(const Velk_lm& module, Discovery& discovery) {
    for (std::size_t i = 0; i < module.fileCount; ++i) {
        const std::string tag = orEmpty(module.files[i].tag);
        const std::string path = orEmpty(module.files[i].path);
        if (tag == common::kMappingFileTag) {
            discovery.mappingFiles.push_back(path);
        } else if (isMisspelt(tag, common::kMappingFileTag)) {
            discovery.problems.push_back(path + " is not read: its tag is " + inQuotes(tag) +
                                         ", not '" + common::kMappingFileTag + "'");
        }
    }
}

} // namespace

std::string quoted(const Identity& identity) {
    return inQuotes(identity.productNumber) + ' ' + inQuotes(identity.revision);
}

Discovery discover() {
    SharedObject handler(kLoadModuleLibrary);
    auto* const getLoadModules = handler.function<decltype(Velk_get_lms)>("Velk_get_lms");
    auto* const freeBuffers = handler.function<decltype(Velk_free_buffers)>("Velk_free_buffers");
    Discovery discovery;
    const Identity& identity =
        discovery.identity = {common::environment(common::kProductNumberVariable),
                              common::environment(common::kRevisionVariable)};
    for (std::string category : common::kLoadModuleCategories) {
        Velk_lm_list list{};
        if (const int error = getLoadModules(nullptr, category.data(), &list); error != VELK_OK) {
            discovery.problems.push_back("the load modules of the category '" + category +
                                         "' are missing: the handler answers error " +
                                         std::to_string(error));
            continue;
        }
        for (std::size_t i = 0; i < list.count; ++i) {
            const Velk_lm& module = list.lms[i];
            const Identity found{orEmpty(module.productNumber), orEmpty(module.revision)};
            discovery.loadModules.push_back(found);
            if (found.productNumber == identity.productNumber &&
                found.revision == identity.revision) {
                discovery.isFound = true;
                addFiles(module, discovery);
            }
        }
        freeBuffers(&list);
    }
    return discovery;
}

std::string Discovery::whyNoMappingFile() const {
    if (!mappingFiles.empty()) {
        return {};
    }
    if (isFound) {
        return "the load module " + quoted(identity) + " has no file tagged '" +
               common::kMappingFileTag + '\'';
    }
    std::vector<std::string> others;
    for (const Identity& each : loadModules) {
        if (std::find(others.begin(), others.end(), quoted(each)) == others.end()) {
            others.push_back(quoted(each));
        }
    }
    const auto difference = [&](const std::string& other) {
        return distance(other, quoted(identity));
    };
    std::stable_sort(others.begin(), others.end(), [&](const auto& one, const auto& other) {
        return difference(one) < difference(other);
    });
    const std::size_t unnamed = others.size() - std::min(others.size(), kMostNamed);
    others.resize(others.size() - unnamed);
    return "there is no load module " + quoted(identity) +
           (others.empty() ? ", nor any other" : ", but " + joined(others)) +
           (unnamed == 0 ? "" : " and " + counted(unnamed, "other"));
}

} // namespace dolqctl
