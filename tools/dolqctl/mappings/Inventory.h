#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

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

/// The folder that all paths begin with, up to its last '/'.
std::string commonFolder(const std::vector<std::string>& paths);

/// One entry of a mapping file as the library's reader stores it.
struct Mapping {
    std::uint32_t faultId;
    std::string moClass;
    std::uint32_t minorType;
    FilePosition position;
};

/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);

/// By fault id, then class byte for byte: all mappings that were read for them, one replacing the
/// other. The last one is what a program has.
using Mappings = std::map<std::pair<std::uint32_t, std::string>, std::vector<Mapping>>;

/// A file that the reader takes nothing from, where in it, and why.
struct UnreadableFile {
    FilePosition position;
    std::string reason;
};

/// For a file of which the reader said that `document` was not loaded.
UnreadableFile whyNotLoaded(const std::string& path, const TiXmlDocument& document);
UnreadableFile whyNoRoot(const std::string& path);

/// What the library's reader takes from mapping files read one after the other.
struct Inventory {
    std::vector<UnreadableFile> unreadable; ///< those without any mapping, too
    std::vector<FilePosition> skipped;      ///< mapping elements without both ids
    Mappings mappings;
};

Inventory readMappingFiles(const std::vector<std::string>& paths);

} // namespace dolqctl
