#include <memory>
#include <optional>
#include <regex>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Options.h"
#include "doctor/Diagnosis.h"
#include "mappings/Discovery.h"
#include "mappings/Inventory.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(Exit codes: 0 all mappings were read; 1 nothing to show, or something could not
be read; 2 wrong usage.

Example:
  dolqctl mappings --product CXC1370001 --revision R1A --alarm 2/17)";

struct Arguments {
    Identity identity;
    std::optional<std::uint32_t> faultId;
    std::optional<std::string> moClass;
    std::optional<std::string> alarm;
    bool json = false;
};

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

Mappings chosen(const Mappings& all, const Arguments& arguments) {
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
              {"unreadable", inventory.unreadable},
              {"skipped", inventory.skipped},
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

int run(const Arguments& arguments, Output& output) {
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
    const bool isComplete = discovery.failedCategories.empty() && inventory.unreadable.empty();
    return isComplete && !mappings.empty() ? kFine : kFindings;
}

} // namespace

void addMappingsCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<Arguments>();
    Options options = commandLine.add(
        "mappings", "Show which mappings a load module's programs get, and from which file",
        kFooter, [arguments](Output& output) { return run(*arguments, output); });
    addIdentityOptions(options, arguments->identity);
    options.id("--fault", arguments->faultId, "Only mappings of this fault id");
    options.value("--class", "NAME", arguments->moClass,
                  "Only mappings of this managed object class, byte for byte");
    options.value("--alarm", "MAJOR/MINOR", arguments->alarm,
                  "Only mappings to this alarm, for instance 2/17, or a minor type");
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
