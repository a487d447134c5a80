#include <algorithm>
#include <memory>
#include <optional>

#include "Commands.h"
#include "Options.h"
#include "mappings/Discovery.h"
#include "mappings/Inventory.h"
#include "mappings/JsonView.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(Exit codes: 0 fine; 1 nothing to show, or something could not be read; 2 wrong usage.

Example:
  dolqctl mappings --product CXC1370001 --revision R1A --fault 4102)";

struct Arguments {
    Identity identity;
    std::optional<std::uint32_t> faultId;
    std::optional<std::string> moClass;
    bool json = false;
};

struct FileState {
    std::string text;
    Style style = Style::Plain;
};

FileState stateOf(const std::string& path, const Inventory& inventory) {
    for (const UnreadableFile& file : inventory.unreadable) {
        if (file.position.file == path) {
            return {"not read: " + file.reason, Style::Bad};
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
std::string given(const Arguments& arguments) {
    const std::string fault =
        arguments.faultId ? "--fault " + std::to_string(*arguments.faultId) : "";
    const std::string moClass = arguments.moClass ? "--class " + inQuotes(*arguments.moClass) : "";
    return fault + (fault.empty() || moClass.empty() ? "" : " and ") + moClass;
}

std::vector<const EffectiveMapping*> chosen(const Inventory& inventory,
                                            const Arguments& arguments) {
    std::vector<const EffectiveMapping*> mappings;
    for (const EffectiveMapping& effective : inventory.effective) {
        if ((!arguments.faultId || *arguments.faultId == effective.mapping.faultId) &&
            (!arguments.moClass || *arguments.moClass == effective.mapping.moClass)) {
            mappings.push_back(&effective);
        }
    }
    return mappings;
}

void printTables(const Discovery& discovery, const Inventory& inventory,
                 const std::vector<const EffectiveMapping*>& mappings, Output& output) {
    output.line("Load module " + identityText(discovery.identity));
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
                   alarmText(mapping.minorType), lineText(mapping.position),
                   overriddenText(*effective)});
    }
    if (!table.isEmpty()) {
        output.print(table);
    }
}

int run(const Arguments& arguments, Output& output) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const std::vector<const EffectiveMapping*> mappings = chosen(inventory, arguments);
    if (arguments.json) {
        printMappingsJson(discovery, inventory, mappings, output);
    } else {
        printTables(discovery, inventory, mappings, output);
    }
    for (const std::string& problem : readingProblems(discovery, inventory)) {
        tell(problem);
    }
    if (mappings.empty() && !inventory.effective.empty()) {
        tell("no mapping fits " + given(arguments));
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
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
