#include <optional>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "mappings/Discovery.h"
#include "mappings/Explanation.h"

namespace dolqctl {

namespace {

nlohmann::ordered_json jsonOf(const Explanation& explanation, const Identity& identity) {
    using Json = nlohmann::ordered_json;
    Json json{{"answer", explanation.answer()},
              {"faultId", explanation.faultId},
              {"object", explanation.object},
              {"productNumber", identity.productNumber},
              {"revision", identity.revision},
              {"class", explanation.moClass.name},
              {"relativeName", explanation.object.substr(explanation.moClass.begin)},
              {"hasComma", explanation.moClass.hasComma},
              {"hasEqual", explanation.moClass.hasEqual},
              {"mapping", explanation.found ? effectiveJson(*explanation.found) : Json()},
              {"otherMappings", Json::array()},
              {"raise", explanation.obstacles.empty() && explanation.conditions.empty()},
              {"cease", explanation.obstacles.empty()},
              {"obstacles", explanation.obstacles},
              {"conditions", explanation.conditions}};
    for (const Mapping* const near : explanation.nearMisses) {
        json["otherMappings"].push_back(*near);
        json["otherMappings"].back()["difference"] = explanation.difference(near->moClass);
    }
    return json;
}

void printText(const Explanation& explanation, const Discovery& discovery, Output& output) {
    const bool isSent = explanation.obstacles.empty();
    const Style style = !isSent                          ? Style::Bad
                        : explanation.conditions.empty() ? Style::Good
                                                         : Style::Warning;
    output.wrapped(output.styled(style, explanation.answer()));
    for (std::size_t i = 1; i < explanation.obstacles.size(); ++i) {
        output.wrapped("- " + explanation.obstacles[i], "  ");
    }
    output.line(isSent ? "A cease would go out." : "A cease would not be sent, either.");
    if (isSent) {
        output.wrapped(
            "Not known: whether the service takes the alarm ('dolqctl raise' tries), and what "
            "the program maps or changes in its surroundings itself.");
    }
    output.line();
    output.wrapped("Class " + explanation.classText());
    output.line(discovery.heading());
    Table table({{"MAPPING"}, {"CLASS"}, {"ALARM"}, {"MINOR TYPE", Align::Right}, {"FILE:LINE"}});
    const auto add = [&](const std::string& what, const Mapping& mapping) {
        table.add({what, mapping.moClass, alarmText(mapping.minorType),
                   std::to_string(mapping.minorType),
                   lineText(mapping.position, discovery.commonFolder().size())});
    };
    if (explanation.found != nullptr) {
        for (auto each = explanation.found->rbegin(); each != explanation.found->rend(); ++each) {
            add(each == explanation.found->rbegin() ? "used" : "overridden", *each);
        }
    }
    for (const Mapping* const near : explanation.nearMisses) {
        add(explanation.difference(near->moClass), *near);
    }
    if (!table.isEmpty()) {
        output.line();
        output.print(table);
    }
}

} // namespace

int runExplain(const ExplainArguments& arguments, Output& output) {
    const Discovery discovery = discover(arguments.identity);
    const Inventory inventory = readMappingFiles(discovery.mappingFiles);
    const Explanation explanation =
        explain(arguments.faultId, arguments.object, discovery, inventory, arguments.identityGiven);
    if (arguments.json) {
        output.print(jsonOf(explanation, arguments.identity));
    } else {
        printText(explanation, discovery, output);
    }
    return explanation.obstacles.empty() && explanation.conditions.empty() ? kFine : kFindings;
}

} // namespace dolqctl
