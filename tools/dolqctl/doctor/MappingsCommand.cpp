#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Discovery.h"
#include "MappingFiles.h"
#include "Output.h"

namespace dolqctl {

using Json = nlohmann::ordered_json;

int runMappings(const Arguments& arguments) {
    const Discovery discovery = discover();
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    std::vector<std::string> problems = discovery.problems;
    if (discovery.mappingFiles.empty()) {
        problems.push_back(discovery.whyNoMappingFile());
    }
    for (const Finding& each : inventory.findings) {
        if (each.isError()) {
            problems.push_back(positionText(each.position) + ": " + each.message);
        }
    }
    Json mappings = Json::array();
    std::vector<std::vector<std::string>> rows = {
        {"FAULT", "CLASS", "ALARM", "MINOR TYPE", "OVERRIDES", "FILE:LINE"}};
    for (const auto& [key, history] : inventory.mappings) {
        Json alarms = Json::array(); // what programs get, and what it replaces
        for (auto each = history.rbegin(); each != history.rend(); ++each) {
            alarms.push_back({{"alarm", alarmText(each->minorType)},
                              {"minorType", each->minorType},
                              {"file", each->position.file},
                              {"line", each->position.line}});
        }
        const Mapping& used = history.back();
        rows.push_back({std::to_string(key.first), key.second, alarmText(used.minorType),
                        std::to_string(used.minorType),
                        history.size() > 1 ? alarmText(history.rbegin()[1].minorType) : "",
                        positionText({used.position.file, used.position.line, 0})});
        mappings.push_back({{"faultId", key.first}, {"class", key.second}, {"alarms", alarms}});
    }
    if (arguments.json) {
        printJson({{"productNumber", discovery.identity.productNumber},
                   {"revision", discovery.identity.revision},
                   {"files", discovery.mappingFiles},
                   {"mappings", mappings},
                   {"problems", problems}});
    } else {
        printTable(std::move(rows));
        for (const std::string& problem : problems) {
            tell(problem);
        }
    }
    return problems.empty() ? kFine : kFindings;
}

} // namespace dolqctl
