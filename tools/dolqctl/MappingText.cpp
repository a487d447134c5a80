#include "MappingText.h"

#include <iomanip>
#include <sstream>

#include <nlohmann/json.hpp>

#include "adapter/MinorType.h"

namespace dolqctl {

std::string hexText(std::uint32_t minorType) {
    std::ostringstream text;
    text << "0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(8) << minorType;
    return text.str();
}

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

std::string overriddenText(const EffectiveMapping& effective) {
    std::string all;
    for (const Mapping& mapping : effective.overridden) {
        all += (all.empty() ? "" : ", ") + std::to_string(mapping.minorType) + " at " +
               lineText(mapping.place);
    }
    return all;
}

nlohmann::ordered_json toJson(const Mapping& mapping) {
    nlohmann::ordered_json json{{"faultId", mapping.faultId},
                                {"class", mapping.moClass},
                                {"minorType", mapping.minorType},
                                {"minorTypeHex", hexText(mapping.minorType)},
                                {"majorId", dolq::majorIdOf(mapping.minorType)},
                                {"minorId", dolq::minorIdOf(mapping.minorType)}};
    addTo(json, mapping.place);
    return json;
}

nlohmann::ordered_json toJson(const EffectiveMapping& effective) {
    nlohmann::ordered_json json = toJson(effective.mapping);
    json["overrides"] = nlohmann::ordered_json::array();
    for (const Mapping& mapping : effective.overridden) {
        json["overrides"].push_back(toJson(mapping));
    }
    return json;
}

} // namespace dolqctl
