#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/MappingFiles.h"

namespace dolqctl {

namespace {

/// What all paths begin with, up to a '/'.
std::size_t commonLength(const std::vector<std::string>& paths) {
    std::string common = paths.empty() ? "" : paths.front();
    for (const std::string& path : paths) {
        const auto end = std::mismatch(common.begin(), common.end(), path.begin(), path.end());
        common.erase(end.first, common.end());
    }
    return common.rfind('/') + 1;
}

void print(const Discovery& discovery, const Mappings& mappings) {
    const std::size_t folder = commonLength(discovery.mappingFiles);
    printLine("Load module " + quoted(discovery.identity));
    for (const std::string& path : discovery.mappingFiles) {
        printLine("  " + printable(path));
    }
    std::vector<std::vector<std::string>> rows = {
        {"FAULT", "CLASS", "ALARM", "MINOR TYPE", "OVERRIDES", "FILE:LINE"}};
    for (const auto& [key, history] : mappings) {
        const Mapping& mapping = history.back();
        std::vector<std::string> overridden;
        for (auto other = history.rbegin() + 1; other != history.rend(); ++other) {
            overridden.push_back(alarmText(other->minorType));
        }
        rows.push_back({std::to_string(mapping.faultId), mapping.moClass,
                        alarmText(mapping.minorType), std::to_string(mapping.minorType),
                        joined(overridden),
                        printable(mapping.position.file.substr(folder)) + ':' +
                            std::to_string(mapping.position.line)});
    }
    if (!mappings.empty()) {
        printLine();
        printTable(std::move(rows));
    }
}

nlohmann::ordered_json jsonOf(const Discovery& discovery, const Diagnosis& diagnosis,
                              const Mappings& mappings) {
    nlohmann::ordered_json json{{"productNumber", discovery.identity.productNumber},
                                {"revision", discovery.identity.revision},
                                {"mappingFiles", discovery.mappingFiles},
                                {"mappings", nlohmann::ordered_json::array()}};
    for (const auto& [key, history] : mappings) {
        json["mappings"].push_back(effectiveJson(history));
    }
    json.update(nlohmann::ordered_json(diagnosis));
    return json;
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
    if (arguments.json) {
        printJson(jsonOf(discovery, diagnosis, mappings));
    } else {
        print(discovery, mappings);
    }
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
