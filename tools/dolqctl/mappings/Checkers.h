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
    /// Of one file, rule and severity, `most` are kept.
    explicit MappingFileChecker(std::size_t most = std::string::npos) : m_most(most) {}

    /// Reads `path` on top of the files before it, and calls it `name`. A manifest is recognized
    /// and checked as one.
    std::vector<Finding> check(const std::string& path, const std::string& name);

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override;
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    struct Earlier {
        std::uint32_t minorType;
        FilePosition position;
    };

    void checkChildren(const TiXmlElement& element);
    void checkMapping(const TiXmlElement& element);
    void checkNumber(const TiXmlElement& element, const char* name);
    void checkClassList(const TiXmlAttribute& list);
    void checkClass(const TiXmlAttribute& list, const std::string& moClass);
    void checkUnread(const TiXmlElement& element);
    void remember(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                  const std::string& moClass);
    const std::size_t m_most;
    Findings m_findings;
    XmlText m_text;
    std::map<std::pair<std::uint32_t, std::string>, Earlier> m_mappings;
    std::map<std::string, std::pair<std::string, FilePosition>>
        m_spellings; ///< by class in lower case
};

/// Whether somebody meant `text` to be a manifest: its root element is named, or nearly named, like
/// that of one.
bool isManifest(const XmlText& text);

/// Adds the mistakes in the manifest `path`, whose text is `text`, as the embedded load-module
/// handler reads it: an error is a manifest that it refuses, or a mapping file that the library
/// does not find in it.
void checkManifest(const std::string& path, const XmlText& text, Findings& findings);

/// The mistakes in `path`, which is read as a manifest whatever it is. One that does not exist is
/// an error here; to the handler it is an empty category.
std::vector<Finding> findManifestMistakes(const std::string& path);

} // namespace dolqctl
