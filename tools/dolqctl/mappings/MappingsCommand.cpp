#include <algorithm>
#include <optional>
#include <regex>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/MappingFiles.h"

namespace dolqctl {

namespace {

/// Of "2/17", or of the number that stands in a mapping file.
std::uint32_t minorTypeOf(const std::string& alarm) {
    static const std::regex form("(?:(\\d{1,5})/)?(\\d{1,10})");
    std::smatch match;
    if (std::regex_match(alarm, match, form)) {
        const unsigned long long major = match[1].matched ? std::stoull(match[1]) : 0;
        const unsigned long long minor = std::stoull(match[2]);
        if (major <= 0xFFFF && minor <= (match[1].matched ? 0xFFFF : 0xFFFFFFFF)) {
            return static_cast<std::uint32_t>(major << 16 | minor);
        }
    }
    throw CommandError("--alarm: " + inQuotes(alarm) +
                       " is no alarm: give major and minor id, as in 2/17, or the minor type");
}

Mappings chosen(const Mappings& all, const MappingsArguments& arguments) {
    const auto minorType =
        arguments.alarm ? std::optional(minorTypeOf(*arguments.alarm)) : std::nullopt;
    Mappings mappings;
    for (const auto& [key, history] : all) {
        if ((!arguments.faultId || *arguments.faultId == key.first) &&
            (!arguments.moClass || *arguments.moClass == key.second) &&
            (!minorType || *minorType == history.back().minorType)) {
            mappings.emplace(key, history);
        }
    }
    return mappings;
}

void printTables(const Discovery& discovery, const Mappings& mappings, Output& output) {
    const std::size_t folder = discovery.commonFolder().size();
    output.line(discovery.heading());
    for (const Discovery::LoadModule& loadModule : discovery.loadModules) {
        for (const std::string& path : loadModule.mappingFiles) {
            output.line("  " + loadModule.category + ": " + printable(path.substr(folder)));
        }
    }
    Table table({{"FAULT", Align::Right},
                 {"CLASS"},
                 {"ALARM"},
                 {"MINOR TYPE", Align::Right},
                 {"FILE:LINE"},
                 {"OVERRIDES"}});
    for (const auto& [key, history] : mappings) {
        const Mapping& mapping = history.back();
        std::vector<std::string> overrides;
        for (auto other = history.rbegin() + 1; other != history.rend(); ++other) {
            overrides.push_back(alarmText(other->minorType) + " at " +
                                lineText(other->position, folder));
        }
        table.add({std::to_string(mapping.faultId), mapping.moClass, alarmText(mapping.minorType),
                   std::to_string(mapping.minorType), lineText(mapping.position, folder),
                   joined(overrides)});
    }
    if (!table.isEmpty()) {
        output.line();
        output.print(table);
    }
}

nlohmann::ordered_json jsonOf(const Discovery& discovery, const Inventory& inventory,
                              const Mappings& mappings) {
    using Json = nlohmann::ordered_json;
    Json json{{"productNumber", discovery.identity.productNumber},
              {"revision", discovery.identity.revision},
              {"failedCategories", discovery.failedCategories},
              {"loadModules", Json::array()},
              {"findings", inventory.findings},
              {"mappings", Json::array()}};
    for (const Discovery::LoadModule& loadModule : discovery.loadModules) {
        if (loadModule.matches) {
            json["loadModules"].push_back(loadModule);
        }
    }
    for (const auto& [key, history] : mappings) {
        json["mappings"].push_back(effectiveJson(history));
    }
    return json;
}

} // namespace

int runMappings(const MappingsArguments& arguments, Output& output) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const Mappings mappings = chosen(inventory.mappings, arguments);
    if (arguments.json) {
        output.print(jsonOf(discovery, inventory, mappings));
    } else {
        printTables(discovery, mappings, output);
    }
    Diagnosis diagnosis;
    checkMappings(diagnosis, discovery, inventory);
    for (const Observation& observation : diagnosis.observations()) {
        if (observation.status != Observation::Status::Ok) {
            tell(observation.finding);
        }
    }
    if (mappings.empty() && !inventory.mappings.empty()) {
        tell("no mapping fits; without --fault, --class and --alarm all of them are shown");
    }
    const bool isComplete =
        discovery.failedCategories.empty() &&
        std::none_of(inventory.findings.begin(), inventory.findings.end(), costsTheFile);
    return isComplete && !mappings.empty() ? kFine : kFindings;
}

} // namespace dolqctl
