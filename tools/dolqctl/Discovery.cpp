#include "Discovery.h"

#include <map>

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
            discovery.loadModules.insert(quoted(found));
            if (quoted(found) == quoted(discovery.identity)) {
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
    const std::string wanted = "load module " + quoted(identity);
    if (loadModules.count(quoted(identity)) > 0) {
        return "the " + wanted + " has no file tagged '" + common::kMappingFileTag + '\'';
    }
    std::multimap<std::size_t, std::string> nearest;
    for (const std::string& each : loadModules) {
        nearest.emplace(distance(each, quoted(identity)), each);
    }
    std::vector<std::string> named;
    for (const auto& [difference, each] : nearest) {
        if (named.size() < kMostNamed) {
            named.push_back(each);
        }
    }
    const std::size_t unnamed = nearest.size() - named.size();
    return "there is no " + wanted +
           (named.empty() ? ", nor any other" : ", but " + joined(named)) +
           (unnamed == 0 ? "" : " and " + counted(unnamed, "other"));
}

} // namespace dolqctl
