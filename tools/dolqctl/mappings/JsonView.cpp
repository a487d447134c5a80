#include "mappings/JsonView.h"

#include <nlohmann/json.hpp>

#include "Output.h"
#include "adapter/MinorType.h"
#include "common/Environment.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

void addTo(Json& json, const FilePosition& position) {
    json["file"] = position.file;
    json["line"] = position.line;
    json["column"] = position.column;
}

Json toJson(const Mapping& mapping) {
    Json json{{"faultId", mapping.faultId},
              {"class", mapping.moClass},
              {"minorType", mapping.minorType},
              {"minorTypeHex", hexText(mapping.minorType)},
              {"majorId", dolq::majorIdOf(mapping.minorType)},
              {"minorId", dolq::minorIdOf(mapping.minorType)}};
    addTo(json, mapping.position);
    return json;
}

Json toJson(const EffectiveMapping& effective) {
    Json json = toJson(effective.mapping);
    json["overrides"] = Json::array();
    for (const Mapping& mapping : effective.overridden) {
        json["overrides"].push_back(toJson(mapping));
    }
    return json;
}

Json toJson(const Finding& finding) {
    Json json;
    addTo(json, finding.position);
    json["severity"] = severityText(finding.severity);
    json["rule"] = finding.rule;
    json["message"] = finding.message;
    if (finding.other) {
        addTo(json["other"], *finding.other);
    }
    return json;
}

Json environmentJson(const char* variable) {
    const char* const value = common::environment(variable, nullptr);
    return value != nullptr ? Json(value) : Json();
}

} // namespace

void printMappingsJson(const Discovery& discovery, const Inventory& inventory,
                       const std::vector<const EffectiveMapping*>& mappings, Output& output) {
    Json json{{"productNumber", discovery.identity.productNumber},
              {"revision", discovery.identity.revision},
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
    for (const UnreadableFile& file : inventory.unreadable) {
        Json& entry = json["unreadable"].emplace_back();
        addTo(entry, file.position);
        entry["reason"] = file.reason;
    }
    for (const FilePosition& position : inventory.skipped) {
        addTo(json["skipped"].emplace_back(), position);
    }
    for (const EffectiveMapping* const effective : mappings) {
        json["mappings"].push_back(toJson(*effective));
    }
    output.print(json);
}

void printCheckJson(const std::vector<std::string>& files, const MappingFileChecker& checker,
                    Output& output) {
    Json json{{"files", files},
              {"errors", checker.count(Severity::Error)},
              {"warnings", checker.count(Severity::Warning)},
              {"findings", Json::array()}};
    for (const Finding& finding : checker.findings()) {
        json["findings"].push_back(toJson(finding));
    }
    output.print(json);
}

void printExplainJson(const Explanation& explanation, const Identity& identity, Output& output) {
    Json json{{"faultId", explanation.faultId},
              {"object", explanation.object},
              {"productNumber", identity.productNumber},
              {"revision", identity.revision},
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
        Json& entry = json["otherMappings"].emplace_back(toJson(*near.effective));
        entry["difference"] = near.difference;
    }
    output.print(json);
}

} // namespace dolqctl
