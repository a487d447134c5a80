#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Diagnosis.h"
#include "MappingFiles.h"
#include "Output.h"
#include "mappings/Discovery.h"

namespace dolqctl {

namespace {

void print(const Discovery& discovery, const Mappings& mappings) {
    std::string folder; // of the first file, left out in the table
    printLine("Load module " + quoted(discovery.identity));
    for (const std::string& path : discovery.mappingFiles) {
        printLine("  " + path);
        folder = folder.empty() ? path.substr(0, path.rfind('/') + 1) : folder;
    }
    std::vector<std::vector<std::string>> rows = {
        {"FAULT", "CLASS", "ALARM", "MINOR TYPE", "OVERRIDES", "FILE:LINE"}};
    for (const auto& [key, history] : mappings) {
        const Mapping& mapping = history.back();
        FilePosition position = mapping.position;
        position.file.erase(0, position.file.rfind(folder, 0) == 0 ? folder.size() : 0);
        std::vector<std::string> overridden;
        for (auto other = history.rbegin() + 1; other != history.rend(); ++other) {
            overridden.push_back(alarmText(other->minorType));
        }
        rows.push_back({std::to_string(mapping.faultId), mapping.moClass,
                        alarmText(mapping.minorType), std::to_string(mapping.minorType),
                        joined(overridden), positionText({position.file, position.line})});
    }
    if (!mappings.empty()) {
        printLine();
        printTable(std::move(rows));
    }
}

} // namespace

int runMappings(const MappingsArguments& arguments) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    Mappings mappings;
    for (const auto& [key, history] : inventory.mappings) {
        if (arguments.alarm.empty() || arguments.alarm == alarmText(history.back().minorType)) {
            mappings.emplace(key, history);
        }
    }
    Diagnosis diagnosis;
    checkMappings(diagnosis, discovery, inventory);
    print(discovery, mappings);
    for (const Observation& each : diagnosis.observations()) {
        if (each.status != Observation::Status::Ok) {
            tell(each.finding);
        }
    }
    if (mappings.empty() && !inventory.mappings.empty()) {
        tell("no fault is mapped to the alarm " + inQuotes(arguments.alarm) +
             ": give its major and minor id, as in 2/17");
        return kFindings;
    }
    return diagnosis.failures() == 0 && discovery.problems.empty() ? kFine : kFindings;
}

} // namespace dolqctl
