// What mapping files and manifests say, and what is wrong in them. All texts are as they stand in
// the files: escape them where they are printed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace dolqctl {

/// Where in a file something stands. Line and column count from 1; 0 is the file as a whole.
struct FilePosition {
    std::string file;
    int line = 0;
    int column = 0;
};

/// "file:line:column", or less where there is none.
std::string positionText(const FilePosition& position);

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

/// An element that maps a fault, or was meant to: what is written in the attributes of these names,
/// or else of similar ones; empty without any.
struct MappingElement {
    FilePosition position;
    std::string faultId;
    std::string classes;
};

/// An error is a mapping that is lost or is not what is written, a warning something that works but
/// is probably unintended.
enum class Severity { Warning, Error };

/// What can be found (check/Rules.h), and what is said of it.
enum class Rule : int;
struct RuleText {
    const char* name; ///< several rules can have one
    Severity severity;
    const char* sentence; ///< with places for the texts of a finding
};
const std::vector<RuleText>& ruleTexts();

struct Finding {
    FilePosition position;
    Rule rule;
    std::vector<std::string> texts = {};    ///< what the rule's sentence speaks of
    std::optional<FilePosition> other = {}; ///< the mapping or class that this one differs from
    std::shared_ptr<const MappingElement> element = {}; ///< what it is about, or none
    std::size_t more = 0; ///< of its rule and file, counted but not kept

    const RuleText& ruleText() const;
    const char* name() const { return ruleText().name; }
    Severity severity() const { return ruleText().severity; }
    /// The rule's sentence; long texts are cut.
    std::string message() const;
    /// Whether nothing of the file is used.
    bool costsTheFile() const;
    /// Whether the element was meant to map the fault for the class, or for any if that is empty.
    bool isAbout(std::uint32_t faultId, const std::string& moClass) const;
};

void to_json(nlohmann::ordered_json& json, const Finding& finding);

struct Inventory {
    Mappings mappings;
    std::vector<Finding> findings; ///< in reading order, those of one file by position
};

/// What the library's reader takes from mapping files read one on top of the other, and what is
/// wrong in them. Needs no part of the platform.
Inventory readMappingFiles(const std::vector<std::string>& paths);

/// What is equal of texts that look much alike: without letter case, blanks, invisible characters
/// and the kind of an accent.
std::wstring folded(const std::string& text);

/// The first character beyond ASCII, "U+00A0"; empty without one or if it is not UTF-8.
std::string characterBeyondAscii(const std::string& text);

} // namespace dolqctl
