#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

class TiXmlBase;

namespace dolqctl {

/// Where in a mapping file something stands. Line and column count from 1; 0 is the file as a
/// whole.
struct Place {
    std::string file;
    int line = 0;
    int column = 0;
};

Place placeOf(const std::string& file, const TiXmlBase& part);

/// "file:line:column", or less where there is none; printable.
std::string text(const Place& place);
/// "file:line".
std::string lineText(const Place& place);

/// Adds "file", "line" and "column".
void addTo(nlohmann::ordered_json& json, const Place& place);

} // namespace dolqctl
