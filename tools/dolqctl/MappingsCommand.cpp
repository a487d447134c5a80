#include "MappingsCommand.h"

#include <algorithm>
#include <memory>
#include <optional>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "Discovery.h"
#include "IdOption.h"
#include "Inventory.h"
#include "MappingText.h"
#include "ReadingProblems.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(Exit codes: 0 fine; 1 nothing to show, or something could not be read; 2 wrong usage.

Example:
  dolqctl mappings --product CXC1370001 --revision R1A --fault 4102)";

struct Options {
    Identity identity;
    std::optional<std::uint32_t> faultId;
    std::optional<std::string> moClass;
    bool json = false;
};

using Json = nlohmann::ordered_json;

struct FileState {
    std::string text;
    Style style = Style::Plain;
};

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

FileState stateOf(const std::string& path, const Inventory& inventory) {
    for (const Unreadable& unreadable : inventory.unreadable) {
        if (unreadable.place.file == path) {
            return {"not read: " + unreadable.reason, Style::Bad};
        }
    }
    const auto file =
        std::find_if(inventory.files.begin(), inventory.files.end(),
                     [&](const Inventory::File& candidate) { return candidate.path == path; });
    const std::string mappings = counted(file->mappings, "mapping");
    if (file->skipped == 0) {
        return {mappings};
    }
    return {mappings + ", " + counted(file->skipped, "element") + " skipped (see dolqctl check)",
            Style::Warning};
}

/// Which of the options that choose mappings were given, as they were.
std::string given(const Options& options) {
    const std::string fault = options.faultId ? "--fault " + std::to_string(*options.faultId) : "";
    const std::string moClass = options.moClass ? "--class " + inQuotes(*options.moClass) : "";
    return fault + (fault.empty() || moClass.empty() ? "" : " and ") + moClass;
}

std::vector<const EffectiveMapping*> chosen(const Inventory& inventory, const Options& options) {
    std::vector<const EffectiveMapping*> mappings;
    for (const EffectiveMapping& effective : inventory.effective) {
        if ((!options.faultId || *options.faultId == effective.mapping.faultId) &&
            (!options.moClass || *options.moClass == effective.mapping.moClass)) {
            mappings.push_back(&effective);
        }
    }
    return mappings;
}

void printTables(const Options& options, const Discovery& discovery, const Inventory& inventory,
                 const std::vector<const EffectiveMapping*>& mappings, Output& output) {
    output.line("Load module " + text(options.identity));
    output.line();
    Table files({{"CATEGORY"}, {"FILE"}, {"STATE"}});
    for (const Discovery::LoadModule& loadModule : discovery.loadModules) {
        if (!loadModule.matches) {
            continue;
        }
        for (const std::string& path : loadModule.mappingFiles) {
            const FileState state = stateOf(path, inventory);
            files.add({loadModule.category, path, {state.text, state.style}});
        }
        if (loadModule.mappingFiles.empty()) {
            files.add({loadModule.category, "", "no file tagged alarm_mapping"});
        }
    }
    if (!files.isEmpty()) {
        output.print(files);
        output.line();
    }
    Table table({{"FAULT", Align::Right},
                 {"CLASS"},
                 {"MINOR TYPE", Align::Right},
                 {"HEX"},
                 {"ALARM"},
                 {"FILE:LINE"},
                 {"OVERRIDES"}});
    for (const EffectiveMapping* const effective : mappings) {
        const Mapping& mapping = effective->mapping;
        table.add({std::to_string(mapping.faultId), mapping.moClass,
                   std::to_string(mapping.minorType), hexText(mapping.minorType),
                   alarmText(mapping.minorType), lineText(mapping.place),
                   overriddenText(*effective)});
    }
    if (!table.isEmpty()) {
        output.print(table);
    }
}

Json toJson(const Options& options, const Discovery& discovery, const Inventory& inventory,
            const std::vector<const EffectiveMapping*>& mappings) {
    Json json{{"productNumber", options.identity.productNumber},
              {"revision", options.identity.revision},
              {"failedCategories", Json::array()},
              {"loadModules", Json::array()},
              {"unreadable", Json::array()},
              {"skipped", Json::array()},
              {"mappings", Json::array()}};
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        json["failedCategories"].push_back(
            {{"category", failure.category}, {"errorCode", failure.errorCode}});
    }
    for (const Discovery::LoadModule& loadModule : discovery.loadModules) {
        if (loadModule.matches) {
            json["loadModules"].push_back({{"category", loadModule.category},
                                           {"productNumber", loadModule.identity.productNumber},
                                           {"revision", loadModule.identity.revision},
                                           {"mappingFiles", loadModule.mappingFiles}});
        }
    }
    for (const Unreadable& unreadable : inventory.unreadable) {
        Json entry;
        addTo(entry, unreadable.place);
        entry["reason"] = unreadable.reason;
        json["unreadable"].push_back(std::move(entry));
    }
    for (const Place& place : inventory.skipped) {
        addTo(json["skipped"].emplace_back(), place);
    }
    for (const EffectiveMapping* const effective : mappings) {
        json["mappings"].push_back(toJson(*effective));
    }
    return json;
}

int run(const Options& options, Output& output) {
    const Discovery discovery = discover(options.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const std::vector<const EffectiveMapping*> mappings = chosen(inventory, options);
    if (options.json) {
        output.print(toJson(options, discovery, inventory, mappings));
    } else {
        printTables(options, discovery, inventory, mappings, output);
    }
    for (const std::string& problem : readingProblems(options.identity, discovery, inventory)) {
        tell(problem);
    }
    if (mappings.empty() && !inventory.effective.empty()) {
        tell("no mapping fits " + given(options));
    }
    const bool isComplete = discovery.failedCategories.empty() && inventory.unreadable.empty();
    return isComplete && !mappings.empty() ? kFine : kFindings;
}

} // namespace

void addMappingsCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand(
        "mappings", "Show which mappings a load module's programs get, and from which file");
    const auto options = std::make_shared<Options>();
    addIdentityOptions(*command, options->identity);
    command->add_option("--fault", options->faultId, "Only mappings of this fault id")
        ->check(checkId);
    command->add_option("--class", options->moClass, "Only mappings of this managed object class");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer(kFooter);
    command->callback([options, &context] { context.exitCode = run(*options, context.output); });
}

} // namespace dolqctl
