#include "Place.h"

#include <nlohmann/json.hpp>
#include <tinyxml.h>

#include "Output.h"

namespace dolqctl {

Place placeOf(const std::string& file, const TiXmlBase& part) {
    return {file, part.Row(), part.Column()};
}

std::string text(const Place& place) {
    return place.column == 0 ? lineText(place)
                             : lineText(place) + ':' + std::to_string(place.column);
}

std::string lineText(const Place& place) {
    return place.line == 0 ? printable(place.file)
                           : printable(place.file) + ':' + std::to_string(place.line);
}

void addTo(nlohmann::ordered_json& json, const Place& place) {
    json["file"] = place.file;
    json["line"] = place.line;
    json["column"] = place.column;
}

} // namespace dolqctl
