#include "ReadingProblems.h"

#include <algorithm>

namespace dolqctl {

std::vector<std::string> readingProblems(const Identity& identity, const Discovery& discovery,
                                         const Inventory& inventory) {
    std::vector<std::string> problems;
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        problems.push_back(text(failure));
    }
    const bool isKnown =
        std::any_of(discovery.loadModules.begin(), discovery.loadModules.end(),
                    [](const Discovery::LoadModule& module) { return module.matches; });
    if (!isKnown) {
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
