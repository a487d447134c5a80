#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mappings/Inventory.h"

class TiXmlAttribute;
class TiXmlElement;

namespace dolqctl {

enum class Severity { Warning, Error };

struct Finding {
    FilePosition position;
    Severity severity;
    const char* rule;
    std::string message;
    std::optional<FilePosition> other = {}; ///< the mapping that this one replaces or repeats
    std::size_t more = 0;                   ///< of its rule and severity, counted but not kept
};

/// What is wrong in one file.
class Findings {
public:
    /// Keeps the first `most` of one rule and severity.
    explicit Findings(std::string file = {}, std::size_t most = std::string::npos)
        : m_file(std::move(file)), m_most(most) {}

    const std::string& file() const { return m_file; }
    bool hasError() const;
    void add(Finding finding);
    void add(Severity severity, const char* rule, const TiXmlBase& part, std::string message);

    /// By position; nothing is left here.
    std::vector<Finding> take();

private:
    std::string m_file;
    std::size_t m_most;
    std::vector<Finding> m_all;
    std::map<std::pair<std::string_view, Severity>, std::size_t> m_counts;
};

/// What the raw text of a file says about it.
struct XmlText {
    int readError = 0; ///< an errno value where there is no text
    std::string rootName;
    std::string failure; ///< why the parser stops; empty where it was not seen to
    FilePosition failedAt;
};

/// Follows the raw text of `path` as TinyXML does, for where and why it stops. Adds what it
/// swallows.
XmlText checkText(const std::string& path, Findings& findings);

/// Adds why nothing of the file is read; `document` is what the reader made of it.
void addNotLoaded(const XmlText& text, const TiXmlDocument& document, Findings& findings);

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

/// A text, and what it looks like.
struct PlainText {
    std::string letters; ///< with letters of other alphabets replaced by those they look like
    std::string visible; ///< without what looks like a blank or like nothing, as `letters` is, too
    std::string first;   ///< the name of the first such character, "U+00A0"; empty without one
};

/// Words of languages that have such letters stay as they are.
PlainText plainText(std::string_view text);

} // namespace dolqctl
