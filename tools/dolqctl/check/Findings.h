#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MappingFiles.h"

class TiXmlAttribute;
class TiXmlBase;
class TiXmlElement;

namespace dolqctl {

/// Collects what is wrong in files that are read one after the other.
class Findings {
public:
    /// Keeps the first `most` of one rule and file.
    explicit Findings(std::size_t most) : m_most(most) {}

    /// The next findings are those of `file`. Of one that was read before, under whatever name,
    /// only what it overrides is kept.
    void beginFile(const std::string& file, bool wasRead);
    const std::string& file() const { return m_file; }
    /// Each once, in reading order.
    const std::vector<std::string>& files() const { return m_files; }

    /// The next findings are about this element; null for none.
    void beginElement(const TiXmlElement* element);

    void add(Finding finding);
    /// `part`: an element, an attribute or a text of the file.
    void add(Rule rule, const TiXmlBase& part, std::vector<std::string> texts = {});
    void addFile(Rule rule, std::vector<std::string> texts = {}) { add({{m_file}, rule, texts}); }
    /// Texts between the children of `element`, which nothing reads.
    void addUnreadText(const TiXmlElement& element);
    /// Attributes of `element` that are none of the `known` ones, which are all that is read.
    void addUnknownAttributes(const TiXmlElement& element, const std::vector<const char*>& known);

    FilePosition positionOf(const TiXmlBase& part) const;
    /// By file in reading order, then by position; nothing is left here.
    std::vector<Finding> take();

private:
    const std::size_t m_most;
    std::string m_file;
    bool m_wasRead = false;
    std::vector<std::string> m_files;
    std::map<std::string, std::size_t> m_order; ///< of each name of a file
    const TiXmlElement* m_about = nullptr;
    std::shared_ptr<const MappingElement> m_element; ///< made of it when a finding needs it
    std::vector<Finding> m_all;
    /// By file and rule: how many are kept, and where the last one of them is.
    std::map<std::pair<std::string, Rule>, std::pair<std::size_t, std::size_t>> m_kept;
};

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

/// The names of all rules, each once.
std::set<std::string> ruleNames();

} // namespace dolqctl
