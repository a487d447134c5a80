#include "Correlation.h"

#include <cstring>

#include <nlohmann/json.hpp>

namespace dolqctl {

namespace {

constexpr char kPrefix[] = "CI=";

} // namespace

std::optional<Correlation> decodeCorrelation(const std::string& entry) {
    using Json = nlohmann::json;
    if (entry.rfind(kPrefix, 0) != 0) {
        return std::nullopt;
    }
    try {
        const Json json = Json::parse(entry.substr(std::strlen(kPrefix)));
        Correlation correlation;
        json.at("C").at(0).at("I").get_to(correlation.systemUuid);
        json.at("C").at(0).at("n").get_to(correlation.computeName);
        correlation.isPrimary = json.contains("P");
        if (correlation.isPrimary) {
            correlation.uuids.push_back(json.at("P").get<std::string>());
        } else {
            json.at("S").get_to(correlation.uuids);
        }
        return correlation;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

} // namespace dolqctl
