#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

class TiXmlAttribute;
class TiXmlBase;

namespace dolqctl {

/// Where in a file something stands. Line and column count from 1; 0 is the file as a whole.
struct FilePosition {
    std::string file;
    int line = 0;
    int column = 0;
};

FilePosition positionOf(const std::string& file, const TiXmlBase& part);

/// "file:line:column", or less where there is none.
std::string positionText(const FilePosition& position);
/// "file:line".
std::string lineText(const FilePosition& position);

/// An error is a mapping that is lost or is not what is written, a warning something that works but
/// was hardly meant.
enum class Severity { Warning, Error };

struct Finding {
    FilePosition position;
    Severity severity;
    const char* rule;
    std::string message;
    std::optional<FilePosition> other = {}; ///< the mapping that this one replaces or repeats
    std::string about = {};                 ///< the values of the element's attributes, or its text
    std::size_t more = 0;                   ///< of its rule and severity, counted but not kept
};

/// What is wrong in one file.
class Findings {
public:
    /// Keeps the first `most` of one rule and severity.
    Findings(std::string file, std::size_t most) : m_file(std::move(file)), m_most(most) {}

    const std::string& file() const { return m_file; }
    bool hasError() const;
    void add(Finding finding);
    /// `part`: an element, an attribute or a text of the file.
    void add(Severity severity, const char* rule, const TiXmlBase& part, std::string message);

    /// By position; nothing is left here.
    std::vector<Finding> take();

private:
    std::string m_file;
    std::size_t m_most;
    std::vector<Finding> m_all;
    /// By rule and severity: how many are kept, and where the last one of them is.
    std::map<std::pair<std::string_view, Severity>, std::pair<std::size_t, std::size_t>> m_kept;
};

/// Whether nothing of the file is used.
bool costsTheFile(const Finding& finding);

/// Foreign text in quotes; only the beginning of a long one.
std::string inShortQuotes(std::string_view text);

/// `name="value"`.
std::string written(const TiXmlAttribute& attribute);

/// What a text looks like.
struct PlainText {
    std::string letters; ///< look-alikes replaced, and without what looks like a blank or nothing
    std::string odd;     ///< the first character that this changes, "U+00A0"; or empty
    bool isInvisible = false; ///< so is that character
    bool isUtf8 = true;
};

/// Words of languages that have such letters stay as they are.
PlainText plainText(std::string_view text);

/// `letters` in lower case.
std::string folded(const std::string& text);

void to_json(nlohmann::ordered_json& json, const FilePosition& position);
void to_json(nlohmann::ordered_json& json, const Finding& finding);

} // namespace dolqctl
