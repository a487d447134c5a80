#include "ReadingProblems.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Output.h"

namespace dolqctl {

std::string noLoadModulesAtAll() {
    const std::string start = "there are no load modules at all: VELK_MANIFEST_DIR, the embedded "
                              "handler's folder of manifests, is ";
    const char* const folder = std::getenv("VELK_MANIFEST_DIR");
    if (folder == nullptr) {
        return start + "not set";
    }
    if (*folder == '\0') {
        return start + "set to nothing";
    }
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(folder, error);
    return start + "'" + printable(folder) + "'" + (isFolder ? "" : ", which is no folder");
}

std::vector<std::string> readingProblems(const Identity& identity, const Discovery& discovery,
                                         const Inventory& inventory) {
    std::vector<std::string> problems;
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        problems.push_back(text(failure));
    }
    const bool isKnown =
        std::any_of(discovery.loadModules.begin(), discovery.loadModules.end(),
                    [](const Discovery::LoadModule& module) { return module.matches; });
    if (discovery.loadModules.empty()) {
        problems.push_back(noLoadModulesAtAll());
    } else if (!isKnown) {
        problems.push_back("the node has no load module " + text(identity) +
                           ": check --product and --revision, or ZBN_NO and ZBN_REV");
    } else if (discovery.mappingFiles.empty()) {
        problems.push_back("the load module " + text(identity) +
                           " has no file tagged alarm_mapping");
    }
    for (const Unreadable& unreadable : inventory.unreadable) {
        problems.push_back(text(unreadable.place) + ": the file is not read: " + unreadable.reason);
    }
    return problems;
}

} // namespace dolqctl
