#include "ExplainCommand.h"

#include <cstdlib>
#include <memory>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "Explanation.h"
#include "IdOption.h"
#include "MappingText.h"
#include "ReadingProblems.h"
#include "adapter/MinorType.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(SYSTEM_UUID and COMPUTE_NAME are those of this shell; a program may give them with each alarm.

Exit codes: 0 an alarm would be raised; 1 it would not; 2 wrong usage.

Example:
  dolqctl explain --product CXC1370001 --revision R1A --fault 4102 --object Shelf=1,Port=3)";

struct Options {
    Identity identity;
    std::uint32_t faultId = 0;
    std::string object;
    bool json = false;
};

using Json = nlohmann::ordered_json;

std::string howParsed(const Explanation& explanation) {
    const std::string name = inQuotes(explanation.relativeName);
    const std::string where = explanation.moClass.hasComma
                                  ? "the last relative name " + name
                                  : "the whole object " + name + " (it has no comma)";
    return (explanation.moClass.hasEqual ? "before the '=' of " : "no '=' in ") + where;
}

std::string environmentText(const char* variable) {
    const char* const value = std::getenv(variable);
    return std::string(variable) + (value == nullptr ? " not set" : '=' + inQuotes(value));
}

void printText(const Options& options, const Explanation& explanation, Output& output) {
    const auto item = [&](const char* heading, const std::string& text) {
        constexpr std::size_t kWidth = 10;
        std::string padded(heading);
        padded.resize(kWidth, ' ');
        output.line(output.styled(Style::Bold, padded) + text);
    };
    item("Fault", std::to_string(options.faultId) + " on " + inQuotes(options.object) +
                      ", load module " + text(options.identity));
    item("Class", (explanation.moClass.name.empty() ? "none" : inQuotes(explanation.moClass.name)) +
                      ": " + howParsed(explanation));
    if (explanation.found != nullptr) {
        const std::uint32_t minorType = explanation.found->mapping.minorType;
        const std::string replaced = overriddenText(*explanation.found);
        item("Mapping", lineText(explanation.found->mapping.place) +
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
    output.line("Other mappings of fault " + std::to_string(options.faultId) + ':');
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
                   lineText(mapping.place)});
    }
    output.print(table);
}

Json environmentJson(const char* variable) {
    const char* const value = std::getenv(variable);
    return value == nullptr ? Json() : Json(value);
}

void printJson(const Options& options, const Explanation& explanation, Output& output) {
    Json json{{"faultId", options.faultId},
              {"object", options.object},
              {"productNumber", options.identity.productNumber},
              {"revision", options.identity.revision},
              {"class", explanation.moClass.name},
              {"relativeName", explanation.relativeName},
              {"hasComma", explanation.moClass.hasComma},
              {"hasEqual", explanation.moClass.hasEqual},
              {"mapping", explanation.found != nullptr ? toJson(*explanation.found) : Json()},
              {"otherMappings", Json::array()},
              {"systemUuid", environmentJson("SYSTEM_UUID")},
              {"computeName", environmentJson("COMPUTE_NAME")},
              {"raise", explanation.obstacles.empty()},
              {"cease", explanation.found != nullptr},
              {"obstacles", explanation.obstacles}};
    for (const NearMiss& near : explanation.nearMisses) {
        Json entry = toJson(*near.effective);
        entry["difference"] = near.difference;
        json["otherMappings"].push_back(std::move(entry));
    }
    output.print(json);
}

int run(const Options& options, Output& output) {
    const Discovery discovery = discover(options.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const std::vector<std::string> problems =
        readingProblems(options.identity, discovery, inventory);
    const Explanation explanation = explain(options.faultId, options.object, inventory, problems);
    if (explanation.found != nullptr) { // otherwise they are among the obstacles
        for (const std::string& problem : problems) {
            tell(problem);
        }
    }
    if (options.json) {
        printJson(options, explanation, output);
    } else {
        printText(options, explanation, output);
    }
    return explanation.obstacles.empty() ? kFine : kFindings;
}

} // namespace

void addExplainCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand(
        "explain", "Tell whether a fault on an object would raise an alarm, and why not");
    const auto options = std::make_shared<Options>();
    command->add_option("--fault", options->faultId, "Fault id")->required()->check(checkId);
    command
        ->add_option("--object", options->object,
                     "Notification object, a distinguished name such as Shelf=1,Port=3")
        ->required();
    addIdentityOptions(*command, options->identity);
    command->add_flag("--json", options->json, "Print JSON");
    command->footer(kFooter);
    command->callback([options, &context] { context.exitCode = run(*options, context.output); });
}

} // namespace dolqctl
