#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

class TiXmlBase;
class TiXmlDocument;

namespace dolqctl {

/// Where in a mapping file something stands. Line and column count from 1; 0 is the file as a
/// whole.
struct FilePosition {
    std::string file;
    int line = 0;
    int column = 0;
};

FilePosition positionOf(const std::string& file, const TiXmlBase& part);

/// "file:line:column", or less where there is none; printable.
std::string positionText(const FilePosition& position);
/// "file:line", the file without the first `skipped` characters of its path.
std::string lineText(const FilePosition& position, std::size_t skipped = 0);

/// One entry of a mapping file as the library's reader stores it.
struct Mapping {
    std::uint32_t faultId;
    std::string moClass;
    std::uint32_t minorType;
    FilePosition position;
};

/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);

/// In lower case, without white space and what only looks like it.
std::string folded(const std::string& text);

/// By fault id, then class byte for byte: all mappings that were read for them, one replacing the
/// other. The last one is what a program has.
using Mappings = std::map<std::pair<std::uint32_t, std::string>, std::vector<Mapping>>;

/// Something wrong, and where; printable.
struct Mistake {
    FilePosition position;
    std::string text;
};

/// What the library's reader takes from mapping files read one after the other.
struct Inventory {
    std::vector<Mistake> unreadable;   ///< files that give no mapping
    std::vector<FilePosition> skipped; ///< mapping elements without both ids
    std::vector<Mistake> mistakes;     ///< those that cost a mapping, as the checker finds them
    Mappings mappings;
};

Inventory readMappingFiles(const std::vector<std::string>& paths);

void to_json(nlohmann::ordered_json& json, const FilePosition& position);
void to_json(nlohmann::ordered_json& json, const Mistake& mistake);
void to_json(nlohmann::ordered_json& json, const Mapping& mapping);
/// The last one, with what it replaced.
nlohmann::ordered_json effectiveJson(const std::vector<Mapping>& history);

} // namespace dolqctl
