#include <memory>

#include "Commands.h"
#include "Options.h"
#include "adapter/MinorType.h"
#include "common/Environment.h"
#include "mappings/Discovery.h"
#include "mappings/Explanation.h"
#include "mappings/JsonView.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(SYSTEM_UUID and COMPUTE_NAME are those of this shell; a program may give them with each alarm.

Exit codes: 0 an alarm would be raised; 1 it would not; 2 wrong usage.

Example:
  dolqctl explain --product CXC1370001 --revision R1A --fault 4102 --object Shelf=1,Port=3)";

struct Arguments {
    Identity identity;
    std::uint32_t faultId = 0;
    std::string object;
    bool json = false;
};

std::string howParsed(const Explanation& explanation) {
    const std::string name = inQuotes(explanation.relativeName);
    const std::string where = explanation.moClass.hasComma
                                  ? "the last relative name " + name
                                  : "the whole object " + name + " (it has no comma)";
    return (explanation.moClass.hasEqual ? "before the '=' of " : "no '=' in ") + where;
}

std::string environmentText(const char* variable) {
    const char* const value = common::environment(variable, nullptr);
    return std::string(variable) + (value != nullptr ? '=' + inQuotes(value) : " not set");
}

void printText(const Explanation& explanation, const Identity& identity, Output& output) {
    const auto item = [&](const char* heading, const std::string& text) {
        constexpr std::size_t kWidth = 10;
        std::string padded(heading);
        padded.resize(kWidth, ' ');
        output.line(output.styled(Style::Bold, padded) + text);
    };
    item("Fault", std::to_string(explanation.faultId) + " on " + inQuotes(explanation.object) +
                      ", load module " + identityText(identity));
    item("Class", (explanation.moClass.name.empty() ? "none" : inQuotes(explanation.moClass.name)) +
                      ": " + howParsed(explanation));
    if (explanation.found != nullptr) {
        const std::uint32_t minorType = explanation.found->mapping.minorType;
        const std::string replaced = overriddenText(*explanation.found);
        item("Mapping", lineText(explanation.found->mapping.position) +
                            (replaced.empty() ? "" : ", in place of " + replaced));
        item("Alarm", "major id " + std::to_string(dolq::majorIdOf(minorType)) + ", minor id " +
                          std::to_string(dolq::minorIdOf(minorType)) + " (minor type " +
                          std::to_string(minorType) + ", " + hexText(minorType) + ')');
    } else {
        item("Mapping", "none");
    }
    item("Identity", environmentText("SYSTEM_UUID") + ", " + environmentText("COMPUTE_NAME"));
    item("Raise", explanation.obstacles.empty() ? output.styled(Style::Good, "would be sent")
                                                : output.styled(Style::Bad, "would not be sent"));
    for (const std::string& obstacle : explanation.obstacles) {
        item("", "- " + obstacle);
    }
    item("Cease", explanation.found != nullptr ? output.styled(Style::Good, "would be sent")
                                               : output.styled(Style::Bad, "would not be sent"));
    if (explanation.nearMisses.empty()) {
        return;
    }
    output.line();
    output.line("Other mappings of fault " + std::to_string(explanation.faultId) + ':');
    Table table({{"CLASS"},
                 {"DIFFERENCE"},
                 {"MINOR TYPE", Align::Right},
                 {"HEX"},
                 {"ALARM"},
                 {"FILE:LINE"}});
    for (const NearMiss& near : explanation.nearMisses) {
        const Mapping& mapping = near.effective->mapping;
        table.add({mapping.moClass, near.difference, std::to_string(mapping.minorType),
                   hexText(mapping.minorType), alarmText(mapping.minorType),
                   lineText(mapping.position)});
    }
    output.print(table);
}

int run(const Arguments& arguments, Output& output) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const std::vector<std::string> problems = readingProblems(discovery, inventory);
    const Explanation explanation =
        explain(arguments.faultId, arguments.object, inventory, problems);
    if (explanation.found != nullptr) { // otherwise they are among the obstacles
        for (const std::string& problem : problems) {
            tell(problem);
        }
    }
    if (arguments.json) {
        printExplainJson(explanation, arguments.identity, output);
    } else {
        printText(explanation, arguments.identity, output);
    }
    return explanation.obstacles.empty() ? kFine : kFindings;
}

} // namespace

void addExplainCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<Arguments>();
    Options options = commandLine.add(
        "explain", "Tell whether a fault on an object would raise an alarm, and why not", kFooter,
        [arguments](Output& output) { return run(*arguments, output); });
    options.id("--fault", arguments->faultId, "Fault id").required();
    options
        .value("--object", "DN", arguments->object,
               "Notification object, a distinguished name such as Shelf=1,Port=3")
        .required();
    addIdentityOptions(options, arguments->identity);
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
