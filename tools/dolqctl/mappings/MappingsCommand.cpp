#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/MappingFiles.h"

namespace dolqctl {

namespace {

void printTable(const Discovery& discovery, const Inventory& inventory, Output& output) {
    output.line("Load module " + quoted(discovery.identity));
    for (const std::string& path : discovery.mappingFiles) {
        output.line("  " + printable(path));
    }
    Table table({{"FAULT", Align::Right},
                 {"CLASS"},
                 {"ALARM"},
                 {"MINOR TYPE", Align::Right},
                 {"OVERRIDES"},
                 {"FILE:LINE"}});
    for (const auto& [key, history] : inventory.mappings) {
        const Mapping& mapping = history.back();
        std::vector<std::string> overridden;
        for (auto other = history.rbegin() + 1; other != history.rend(); ++other) {
            overridden.push_back(alarmText(other->minorType));
        }
        table.add({std::to_string(mapping.faultId), mapping.moClass, alarmText(mapping.minorType),
                   std::to_string(mapping.minorType), joined(overridden),
                   lineText(mapping.position)});
    }
    if (!table.isEmpty()) {
        output.line();
        output.print(table);
    }
}

nlohmann::ordered_json jsonOf(const Discovery& discovery, const Diagnosis& diagnosis,
                              const Inventory& inventory) {
    nlohmann::ordered_json json{{"productNumber", discovery.identity.productNumber},
                                {"revision", discovery.identity.revision},
                                {"mappingFiles", discovery.mappingFiles},
                                {"mappings", nlohmann::ordered_json::array()}};
    for (const auto& [key, history] : inventory.mappings) {
        json["mappings"].push_back(effectiveJson(history));
    }
    json.update(nlohmann::ordered_json(diagnosis));
    return json;
}

} // namespace

int runMappings(const MappingsArguments& arguments, Output& output) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    Diagnosis diagnosis;
    checkMappings(diagnosis, discovery, inventory);
    if (arguments.json) {
        output.print(jsonOf(discovery, diagnosis, inventory));
    } else {
        printTable(discovery, inventory, output);
    }
    for (const Observation& each : diagnosis.observations()) {
        if (each.status != Observation::Status::Ok) {
            tell(each.finding);
        }
    }
    return diagnosis.failures() == 0 && discovery.problems.empty() ? kFine : kFindings;
}

} // namespace dolqctl
