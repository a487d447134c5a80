#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mappings/Inventory.h"
#include "xmlconf/MappingFileObserverI.h"

class TiXmlAttribute;

namespace dolqctl {

enum class Severity { Warning, Error };

/// "warning" or "error".
const char* severityText(Severity severity);

struct Finding {
    FilePosition position;
    Severity severity;
    const char* rule; ///< a stable name
    std::string message;
    std::optional<FilePosition> other; ///< the mapping that this one repositions
};

/// What is wrong in files, in the order of the files and of the positions in them.
class Findings {
public:
    const std::vector<Finding>& all() const { return m_all; }
    std::size_t count(Severity severity) const;

    /// What is added from here on stands in `file`.
    void beginFile(const std::string& file);
    void endFile();
    const std::string& file() const { return m_file; }
    bool hasErrorInFile() const;

    void add(Finding finding) { m_all.push_back(std::move(finding)); }
    void add(Severity severity, const char* rule, const TiXmlBase& part, std::string message);

private:
    std::string m_file;
    std::vector<Finding> m_all;
    std::size_t m_beginOfFile = 0;
};

/// Follows the raw text of a file as TinyXML does, for what TinyXML swallows, and for where and why
/// it stops.
class XmlText {
public:
    /// Adds what is wrong in a text that is read all the same.
    XmlText(const std::string& path, Findings& findings);

    const std::string& rootName() const { return m_rootName; }

    /// Adds why nothing of the file is read; `document` is what the reader made of it.
    void addNotLoaded(const TiXmlDocument& document) const;

private:
    std::size_t markup(std::size_t at);
    std::size_t startTag(std::size_t at);
    std::size_t attribute(std::size_t at, std::vector<std::string>& names);
    std::size_t endTag(std::size_t at);
    std::size_t fail(std::size_t at, std::string reason);
    std::string word(std::size_t at) const;
    FilePosition positionOf(std::size_t at) const;

    const std::string& m_path;
    Findings& m_findings;
    std::string m_text;
    std::string m_rootName;
    std::vector<std::size_t> m_open; ///< where the elements that are not closed yet begin
    FilePosition m_failedAt;
    std::string m_failure;
};

/// Looks at mapping files while the library's reader reads them, and finds what the reader skips,
/// or takes for something else than what is written. An error is a mapping lost or changed, a
/// warning something that works but was hardly meant.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    /// Reads `path` on top of the files before it; a manifest is recognized and checked as one.
    void check(const std::string& path);
    const std::vector<Finding>& findings() const { return m_findings.all(); }
    std::size_t count(Severity severity) const { return m_findings.count(severity); }

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override;
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    void checkMapping(const TiXmlElement& element);
    void checkNumber(const TiXmlElement& element, const char* name);
    void checkClassList(const TiXmlAttribute& list);
    void checkClass(const TiXmlElement& element, const std::string& moClass);
    void checkUnread(const TiXmlElement& element);
    void checkNested(const TiXmlElement& element);
    void remember(Mapping mapping);

    void error(const TiXmlBase& part, const char* rule, std::string message);
    void warning(const TiXmlBase& part, const char* rule, std::string message);
    void reportUnread(const TiXmlBase& part, const char* rule, const std::string& message,
                      const char* meant);

    Findings m_findings;
    const XmlText* m_text = nullptr;
    std::map<std::pair<std::uint32_t, std::string>, Mapping> m_mappings;
};

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

/// `name="value"`, fit for a terminal.
std::string written(const TiXmlAttribute& attribute);

/// Whether somebody who wrote `name` may have meant `meant`: at most two characters differ, letter
/// case not counted, nor hyphens and underlines.
bool isMisspelt(const std::string& name, const std::string& meant);

/// Takes out of `text` the characters that look like a blank or like nothing, and yet stay in a
/// class of a mapping file.
void removeInvisible(std::string& text);

} // namespace dolqctl
