#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "mappings/Findings.h"
#include "xmlconf/MappingFileObserverI.h"

namespace dolqctl {

/// Looks at mapping files while the library's reader reads them, and finds what the reader skips,
/// or takes for something else than what is written. An error is a mapping lost or changed, a
/// warning something that works but was hardly meant.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    explicit MappingFileChecker(Findings findings = Findings()) : m_findings(std::move(findings)) {}

    /// Reads `path` on top of the files before it, and calls it `name`. A manifest is recognized
    /// and checked as one.
    void check(const std::string& path, const std::string& name);
    void check(const std::string& path) { check(path, path); }
    const std::vector<Finding>& findings() const { return m_findings.all(); }
    std::size_t count(Severity severity) const { return m_findings.count(severity); }

    void onNotLoaded(const TiXmlDocument& document) override { m_text->addNotLoaded(document); }
    void onNoRoot() override;
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    struct Place {
        std::size_t file;
        int line;
        int column;
    };
    struct Earlier {
        std::uint32_t minorType;
        Place place;
    };

    void checkMapping(const TiXmlElement& element);
    void checkNumber(const TiXmlElement& element, const char* name);
    void checkClassList(const TiXmlAttribute& list);
    void checkClass(const TiXmlAttribute& list, const std::string& moClass);
    void checkUnread(const TiXmlElement& element);
    void checkNested(const TiXmlElement& element);
    void remember(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                  const std::string& moClass);
    Place placeOf(const TiXmlBase& part) const;
    FilePosition positionOf(const Place& place) const;

    void error(const TiXmlBase& part, const char* rule, std::string message);
    void warning(const TiXmlBase& part, const char* rule, std::string message);

    Findings m_findings;
    const XmlText* m_text = nullptr;
    std::vector<std::string> m_files;
    std::map<std::pair<std::uint32_t, std::string>, Earlier> m_mappings;
    std::map<std::string, std::pair<std::string, Place>> m_spellings; ///< by class in lower case
};

} // namespace dolqctl
