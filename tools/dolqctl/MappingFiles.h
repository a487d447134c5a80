// What mapping files and manifests say, and what is wrong in them. All texts are as they stand in
// the files: escape them where they are printed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// The rules: enumerator, name, severity and sentence, in which each $ is a text of the finding.
#define DOLQCTL_RULES(X)                                                                           \
    X(NotLoaded, "not-loaded", LostFile, "the file is not read: $")                                \
    X(NoMapping, "no-mapping", LostFile, "the file has no 'mapping' that is used")                 \
    X(UnmappedFault, "unmapped-fault", Error, R"(fault $ on "$" has no mapping)")                  \
    X(NotWellFormed, "not-well-formed", Error, "$")                                                \
    X(LostMapping, "lost-mapping", Error, "$ is not read: was a mapping meant?")                   \
    X(Unread, "unread", Warning, "$ is not read")                                                  \
    X(LostAttribute, "lost-attribute", Error, R"("$" is not read, and '$' is missing)")            \
    X(UnreadAttribute, "unread-attribute", Warning, R"(the attribute "$" is not read)")            \
    X(NoNumber, "no-number", Error, "'$' is missing or no integer: the element is skipped")        \
    X(OtherNumber, "other-number", Error, R"($="$" is read as $)")                                 \
    X(NegativeNumber, "negative-number", Warning, R"($="$" is $ unsigned and $ signed)")           \
    X(ZeroId, "zero-id", Warning, R"(minor_type_id="$" is the alarm $: is that meant?)")           \
    X(SwappedIds, "swapped-ids", Warning, R"(minor_type_id="$" is alarm $: is it the fault id?)")  \
    X(MissingClass, "missing-class", Warning, "a mapping here is for objects without a class")     \
    X(NoClass, "no-class", Error, R"(managed_object_class="$": the element maps nothing)")         \
    X(BlankInClass, "blank-in-class", Error, R"("$" is read without blanks: is a comma missing?)") \
    X(ClassCharacter, "class-character", Error,                                                    \
      R"(the class "$" stands for itself: only commas separate, and no class has a tab or '=')")   \
    X(BeyondAscii, "beyond-ascii", Warning, R"(the class "$" holds $: so must its objects)")       \
    X(Misleading, "misleading-character", Error, R"(the class "$" holds $: is it what it seems?)") \
    X(SimilarClass, "similar-class", Warning, R"(the class "$" is not "$" at $: is that meant?)")  \
    X(Duplicate, "duplicate", Error, R"(fault $ on "$" gets $ in place of $ at $)")                \
    X(Override, "override", Warning, R"(fault $ on "$" gets $ in place of $ at $)")                \
    X(MisspeltTag, "misspelt-tag", Error, R"(tag="$" is not 'alarm_mapping': the file is lost)")   \
    X(MissingFile, "missing-file", Warning, R"(path="$" is no regular file here)")

namespace dolqctl {

/// An error is a mapping that is lost or is not what is written, a warning something that works but
/// is probably unintended. Of a lost file nothing is used.
enum class Severity { Warning, Error, LostFile };

#define DOLQCTL_ENUMERATOR(rule, name, severity, sentence) rule,
enum class Rule { DOLQCTL_RULES(DOLQCTL_ENUMERATOR) };
#undef DOLQCTL_ENUMERATOR

struct RuleText {
    const char* name;
    Severity severity;
    const char* sentence;
};
#define DOLQCTL_TEXT(rule, name, severity, sentence) {name, Severity::severity, sentence},
constexpr RuleText kRuleTexts[] = {DOLQCTL_RULES(DOLQCTL_TEXT)};
#undef DOLQCTL_TEXT

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
    std::uint32_t minorType;
    FilePosition position;
};

/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);

/// By fault id, then class byte for byte: all mappings that were read for them, one replacing the
/// other. The last one is what a program has.
using Mappings = std::map<std::pair<std::uint32_t, std::string>, std::vector<Mapping>>;

/// An element that maps a fault, or was meant to, as it is written.
struct MappingElement {
    FilePosition position;
    std::string faultId;
    std::string classes;
};

struct Finding {
    /// Makes the message of the rule's sentence and `texts`, of which long ones are cut.
    Finding(FilePosition at, Rule ofRule, const std::vector<std::string>& texts);

    FilePosition position;
    Rule rule;
    std::string message;
    std::shared_ptr<const MappingElement> element; ///< what it is about, or none

    const RuleText& ruleText() const { return kRuleTexts[static_cast<std::size_t>(rule)]; }
    bool isError() const { return ruleText().severity != Severity::Warning; }
    bool costsTheFile() const { return ruleText().severity == Severity::LostFile; }
    /// Whether the element was meant to map the fault for the class, or for any if that is empty.
    bool isAbout(std::uint32_t faultId, const std::string& moClass) const;
};

struct Inventory {
    Mappings mappings;
    std::vector<Finding> findings; ///< in reading order, those of one file by position
};

/// What the library's reader takes from mapping files read one on top of the other, and what is
/// wrong in them. Needs no part of the platform.
Inventory readMappingFiles(const std::vector<std::string>& paths);

/// What a text looks like.
struct Look {
    std::string beyondAscii; ///< "U+00A0": such a character, rather one that misleads; or empty
    bool misleads = false;   ///< it looks like another character or like nothing, or is not UTF-8
    std::wstring folded;     ///< equal for texts that differ in letter case or blanks alone
};
Look lookOf(const std::string& text);

} // namespace dolqctl
