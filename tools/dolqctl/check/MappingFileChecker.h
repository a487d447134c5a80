#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tinyxml.h>

#include "check/Rules.h"
#include "xmlconf/MappingFileObserverI.h"

namespace dolqctl {

/// Product number and revision; nothing for files that no manifest names.
using LoadModule = std::vector<std::string>;
using LoadModuleFile = std::pair<LoadModule, std::string>; ///< one of its mapping files

/// What is not well-formed in a text.
struct XmlProblem {
    int line;
    int column;
    std::string text;
    bool isHarmless; ///< TinyXML reads on after it
};

/// What a parser finds that keeps to the rules of XML, up to where TinyXML may stop. TinyXML, which
/// reads files for programs, does not; without a problem it may take something else than is
/// written.
std::vector<XmlProblem> findXmlProblems(std::string text);

/// Looks at the mapping files of a load module while the library's reader reads them, and finds
/// what the reader skips, or takes for something else than what is written.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    /// Of one file and rule, `most` findings are kept.
    explicit MappingFileChecker(std::size_t most) : m_most(most) {}

    /// Reads `path`, calls it `name`, and returns what is wrong in it, by position. With
    /// `manifestFiles`, a file is a manifest if its root says so: an error is one that the embedded
    /// load-module handler refuses, or a mapping file that the library does not find in it; those
    /// that are there are added to `manifestFiles`, and not read.
    std::vector<Finding> read(const std::string& path, const std::string& name,
                              std::vector<LoadModuleFile>* manifestFiles = nullptr);

    /// What has been read.
    const Mappings& mappings() const { return m_mappings; }
    /// Classes in it that are probably misspelt.
    std::vector<Finding> findSimilarClasses() const;

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override { onNotLoaded({}); }
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    // Collect findings (Findings.cpp).
    FilePosition positionOf(const TiXmlBase& part) const;
    void beginElement(const TiXmlElement* element);
    void add(Finding finding);
    void add(Rule rule, const TiXmlBase& part, std::vector<std::string> texts = {});
    void addUnreadText(const TiXmlElement& element);
    void addUnknownAttributes(const TiXmlElement& element, const std::vector<const char*>& known);
    std::vector<Finding> takeFindings();

    void checkChildren(const TiXmlElement& element);
    void checkMapping(const TiXmlElement& element);
    std::optional<std::uint32_t> checkNumber(const TiXmlElement& element, const char* name);
    void checkClass(const TiXmlAttribute& list, const std::string& moClass);
    bool record(const Mapping& mapping);

    // Of manifests (ManifestChecker.cpp).
    void checkManifest(const TiXmlElement& root);
    std::vector<std::string> checkElement(const TiXmlElement& element, const char* expected,
                                          const std::vector<const char*>& names);
    void checkFile(const TiXmlElement& file, const LoadModule& loadModule);

    /// How classes occur that differ in digits alone.
    struct Use {
        std::string name; ///< of the first
        FilePosition first;
        std::size_t count;
    };

    const std::size_t m_most;
    Mappings m_mappings;
    std::map<std::string, Use> m_uses; ///< by class without digits
    /// By `folded`: the first class, and where it is.
    std::map<std::wstring, std::pair<std::string, FilePosition>> m_spellings;

    // Of the file that is read:
    std::string m_file;
    std::vector<LoadModuleFile>* m_manifestFiles = nullptr;
    std::string m_whyUnread;
    std::vector<XmlProblem> m_problems;
    bool m_hasNul = false;
    bool m_mapsNothing = true;
    const TiXmlElement* m_about = nullptr;           ///< what the next findings are about, or null
    std::shared_ptr<const MappingElement> m_element; ///< made of it when a finding needs it
    std::vector<Finding> m_findings;
    /// By rule: how many are kept, and where the last one of them is.
    std::map<Rule, std::pair<std::size_t, std::size_t>> m_kept;
};

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

} // namespace dolqctl
