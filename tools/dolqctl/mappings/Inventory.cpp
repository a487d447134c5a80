#include "mappings/Inventory.h"

#include <cctype>
#include <cstdio>
#include <iterator>

#include <nlohmann/json.hpp>
#include <tinyxml.h>

#include "Output.h"
#include "adapter/MinorType.h"
#include "mappings/Checkers.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

using Json = nlohmann::ordered_json;

namespace {

class Recorder final : public dolq::xmlconf::MappingFileObserverI {
public:
    Recorder(const std::string& path, Inventory& inventory)
        : m_path(path), m_inventory(inventory) {}

    void onSkipped(const TiXmlElement& element) override {
        m_inventory.skipped.push_back(positionOf(m_path, element));
    }
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override {
        onMapping(element, faultId, minorType, {});
    }
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        m_mapsNothing = false;
        m_inventory.mappings[{faultId, moClass}].push_back(
            {faultId, moClass, minorType, positionOf(m_path, element)});
    }
    bool mapsNothing() const { return m_mapsNothing; }

private:
    const std::string& m_path;
    Inventory& m_inventory;
    bool m_mapsNothing = true;
};

} // namespace

FilePosition positionOf(const std::string& file, const TiXmlBase& part) {
    return {file, part.Row(), part.Column()};
}

std::string positionText(const FilePosition& position) {
    return lineText(position) + (position.column == 0 ? "" : ':' + std::to_string(position.column));
}

std::string lineText(const FilePosition& position, std::size_t skipped) {
    return printable(position.file.substr(skipped)) +
           (position.line == 0 ? "" : ':' + std::to_string(position.line));
}

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

std::string folded(const std::string& text) {
    std::string letters;
    for (const char c : plainText(text).visible) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    Inventory inventory;
    dolq::xmlconf::MappingXmlConfigurator configurator;
    for (const std::string& path : paths) {
        Recorder recorder(path, inventory);
        const std::size_t skippedBefore = inventory.skipped.size();
        const std::size_t mistakesBefore = inventory.mistakes.size();
        const bool isLoaded = configurator.readMappingFile(path, recorder);
        for (const Finding& finding : MappingFileChecker().check(path, path)) {
            // Of two mappings for one fault and class, none is missing.
            if (finding.severity == Severity::Error && finding.rule != std::string("duplicate")) {
                inventory.mistakes.push_back({finding.position, finding.message});
            }
        }
        if (!isLoaded && inventory.mistakes.size() > mistakesBefore) {
            inventory.unreadable.push_back(inventory.mistakes[mistakesBefore]);
        } else if (recorder.mapsNothing()) {
            const std::size_t skipped = inventory.skipped.size() - skippedBefore;
            inventory.unreadable.push_back(
                {{path},
                 "the file maps nothing" +
                     (skipped == 0 ? "" : ": " + counted(skipped, "element") + " skipped")});
        }
    }
    return inventory;
}

void to_json(Json& json, const FilePosition& position) {
    json = {{"file", position.file}, {"line", position.line}, {"column", position.column}};
}

void to_json(Json& json, const Mistake& mistake) {
    json = mistake.position;
    json["reason"] = mistake.text;
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

} // namespace dolqctl
