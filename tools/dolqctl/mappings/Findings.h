#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mappings/Inventory.h"

class TiXmlAttribute;
class TiXmlElement;

namespace dolqctl {

enum class Severity { Warning, Error };

/// "warning" or "error".
const char* severityText(Severity severity);

/// The names of all rules that a finding may have, in alphabetical order.
inline constexpr std::string_view kRules[] = {
    "behind-root",         "beyond-32-bits",    "blank-in-class",    "blank-in-number",
    "character-reference", "class-case",        "class-character",   "class-never-matches",
    "duplicate",           "empty-class",       "final-comma",       "invisible-in-class",
    "look-alike",          "missing-attribute", "missing-class",     "missing-file",
    "misspelt-root",       "misspelt-tag",      "nested-mapping",    "no-class",
    "no-major-id",         "no-mapping",        "not-an-integer",    "not-loaded",
    "not-utf-8",           "override",          "text-after-number", "unknown-attribute",
    "unknown-element",     "unknown-entity",    "unread-text"};

struct Finding {
    FilePosition position;
    Severity severity;
    const char* rule; ///< one of `kRules`
    std::string message;
    std::optional<FilePosition> other = {}; ///< the mapping that this one replaces or repeats
    std::size_t more = 0;                   ///< of its rule and file, counted but not kept
};

/// What is wrong in files, in the order of the files and of the positions in them.
class Findings {
public:
    /// Keeps the first `most` of one rule and file, and none of the rules in `allowed`.
    explicit Findings(std::size_t most = std::string::npos, std::vector<std::string> allowed = {})
        : m_most(most), m_allowed(std::move(allowed)) {}

    const std::vector<Finding>& all() const { return m_all; }
    /// Those included that are not kept.
    std::size_t count(Severity severity) const { return m_counts[severity == Severity::Error]; }

    /// What is added from here on stands in `file`.
    void beginFile(const std::string& file);
    void endFile();
    const std::string& file() const { return m_file; }
    /// Also one that is allowed.
    bool hasErrorInFile() const { return m_hasError; }

    /// The new finding, to be completed; null when it is not kept.
    Finding* add(Severity severity, const char* rule);
    void add(Severity severity, const char* rule, const TiXmlBase& part, std::string message);

private:
    const std::size_t m_most;
    const std::vector<std::string> m_allowed;
    std::string m_file;
    std::vector<Finding> m_all;
    std::array<std::size_t, 2> m_counts{};
    std::array<std::size_t, std::size(kRules)> m_ofRule{}; ///< in this file
    std::size_t m_beginOfFile = 0;
    bool m_hasError = false;
};

/// Follows the raw text of a file as TinyXML does, for what TinyXML swallows, and for where and why
/// it stops.
class XmlText {
public:
    /// Adds what is wrong in a text that is read all the same.
    XmlText(const std::string& path, Findings& findings);

    const std::string& rootName() const { return m_rootName; }
    bool isRead() const { return m_isRead; }
    bool hasFailed() const { return !m_failure.empty(); }

    /// Adds why nothing of the file is read; `document` is what the reader made of it.
    void addNotLoaded(const TiXmlDocument& document) const;

private:
    void checkEncoding();
    std::size_t markup(std::size_t at);
    std::size_t startTag(std::size_t at);
    std::size_t attribute(std::size_t at, std::vector<std::string_view>& names);
    std::size_t endTag(std::size_t at);
    bool checkReferences(std::size_t begin, std::size_t end, bool isRead);

    std::size_t fail(std::size_t at, std::string reason);
    void add(std::size_t at, const char* rule, const std::string& message);
    std::string_view nameAt(std::size_t at) const;
    std::string word(std::size_t at) const;
    FilePosition positionOf(std::size_t at);

    const std::string& m_path;
    Findings& m_findings;
    std::string m_text;
    std::string m_rootName;
    std::size_t m_begin = 0;                   ///< behind a byte order mark
    bool m_isUtf8 = false;                     ///< to the parser
    std::vector<std::size_t> m_open;           ///< where the elements that are not closed yet begin
    std::size_t m_suspect = std::string::npos; ///< a value in this tag that goes on too far
    std::size_t m_lastAt = 0;
    FilePosition m_last; ///< of `m_lastAt`
    FilePosition m_failedAt;
    std::string m_failure;
    bool m_isRead = false;
};

/// Adds texts between the children of `element`, which nothing reads.
void addUnreadText(const TiXmlElement& element, Findings& findings);

/// Adds the attributes of `element` that are none of the `known` ones, which are all that is read.
void addUnknownAttributes(const TiXmlElement& element, const std::vector<const char*>& known,
                          Findings& findings);

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

/// Foreign text in quotes; only the beginning of a long one.
std::string inShortQuotes(std::string_view text);

/// `name="value"`.
std::string written(const TiXmlAttribute& attribute);

/// Whether somebody who wrote `name` may have meant `meant`: at most two letters differ, letter
/// case and punctuation not counted.
bool isMisspelt(const std::string& name, const std::string& meant);

/// `text` in ASCII as far as it looks like that: letters of other alphabets replaced by those they
/// look like, characters that look like a blank or like nothing left out. `firstName`, unless null,
/// becomes the first of them: "U+00A0".
std::string inPlainLetters(std::string_view text, std::string* firstName = nullptr);

/// Takes out of `text` the characters that look like a blank or like nothing, and yet stay in a
/// class of a mapping file.
void removeInvisible(std::string& text);

} // namespace dolqctl
