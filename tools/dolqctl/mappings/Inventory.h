#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mapping/MappingTable.h"

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
/// "file:line".
std::string lineText(const FilePosition& position);

/// One entry of a mapping file as the library's reader stores it.
struct Mapping {
    std::uint32_t faultId;
    std::string moClass;
    std::uint32_t minorType;
    FilePosition position;
};

/// "0x00010002".
std::string hexText(std::uint32_t minorType);
/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);

/// A mapping as a program has it after reading, and the ones that it replaced, the last one first.
struct EffectiveMapping {
    Mapping mapping;
    std::vector<Mapping> overridden;
};

/// "131073 at equipment.xml:8", one for each mapping that was replaced.
std::string overriddenText(const EffectiveMapping& effective);

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
    struct File {
        std::string path;
        std::size_t mappings = 0; ///< overridden ones included
        std::size_t skipped = 0;  ///< mapping elements without both ids
    };
    std::vector<File> files; ///< those that loaded
    std::vector<UnreadableFile> unreadable;
    std::vector<FilePosition> skipped; ///< those elements
    dolq::MappingTable table;
    std::vector<EffectiveMapping> effective; ///< by fault id, then class, as in the table
};

Inventory readMappingFiles(const std::vector<std::string>& paths);

} // namespace dolqctl
