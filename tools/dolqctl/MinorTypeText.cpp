#include "MinorTypeText.h"

#include <iomanip>
#include <sstream>

#include <nlohmann/json.hpp>

#include "mapping/MinorType.h"

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

void addMinorTypeTo(nlohmann::ordered_json& json, std::uint32_t minorType) {
    json["minorType"] = minorType;
    json["minorTypeHex"] = hexText(minorType);
    json["majorId"] = dolq::majorIdOf(minorType);
    json["minorId"] = dolq::minorIdOf(minorType);
}

} // namespace dolqctl
