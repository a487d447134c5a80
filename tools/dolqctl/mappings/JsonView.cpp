#include "mappings/JsonView.h"

#include <iterator>

#include <nlohmann/json.hpp>

#include "Output.h"
#include "adapter/MinorType.h"

namespace dolqctl {

void to_json(Json& json, const FilePosition& position) {
    json = {{"file", position.file}, {"line", position.line}, {"column", position.column}};
}

void to_json(Json& json, const UnreadableFile& file) {
    json = file.position;
    json["reason"] = file.reason;
}

void to_json(Json& json, const Mapping& mapping) {
    char hex[sizeof("0x00010002")];
    std::snprintf(hex, sizeof(hex), "0x%08X", mapping.minorType);
    json = {{"faultId", mapping.faultId},
            {"class", mapping.moClass},
            {"minorType", mapping.minorType},
            {"minorTypeHex", hex},
            {"majorId", dolq::majorIdOf(mapping.minorType)},
            {"minorId", dolq::minorIdOf(mapping.minorType)}};
    json.update(Json(mapping.position));
}

Json effectiveJson(const std::vector<Mapping>& history) {
    Json json = history.back();
    json["overrides"] = std::vector<Mapping>(std::next(history.rbegin()), history.rend());
    return json;
}

void to_json(Json& json, const Discovery::FailedCategory& failure) {
    json = {{"category", failure.category}, {"errorCode", failure.errorCode}};
}

void to_json(Json& json, const Discovery::LoadModule& loadModule) {
    json = {{"category", loadModule.category},
            {"productNumber", loadModule.identity.productNumber},
            {"revision", loadModule.identity.revision},
            {"mappingFiles", loadModule.mappingFiles}};
}

void to_json(Json& json, const Finding& finding) {
    json = finding.position;
    json["severity"] = severityText(finding.severity);
    json["rule"] = finding.rule;
    json["message"] = finding.message;
    if (finding.other) {
        json["other"] = *finding.other;
    }
    if (finding.more > 0) {
        json["more"] = finding.more;
    }
}

void printCheckJson(const std::vector<std::string>& files, const MappingFileChecker& checker,
                    Output& output) {
    output.print(Json{{"files", files},
                      {"errors", checker.count(Severity::Error)},
                      {"warnings", checker.count(Severity::Warning)},
                      {"findings", checker.findings()}});
}

} // namespace dolqctl
