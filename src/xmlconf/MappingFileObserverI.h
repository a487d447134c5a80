#pragma once

#include <cstdint>
#include <string>

class TiXmlDocument;
class TiXmlElement;

namespace dolq::xmlconf {

/// Is told what one alarm mapping file holds, in document order. The document lasts until the
/// reader returns.
class MappingFileObserverI {
public:
    virtual ~MappingFileObserverI() = default;

    /// Whether elements and errors get a row and a column, which costs a fifth of the reading.
    virtual bool wantsPlaces() const { return true; }

    /// The file does not load: `document` has the parser's error, or none because the file cannot
    /// be read or is beyond the limits.
    virtual void onNotLoaded(const TiXmlDocument& /*document*/) {}
    /// The document has no element.
    virtual void onNoRoot() {}
    /// The root element. Its children named "mapping" follow.
    virtual void onRoot(const TiXmlElement& /*root*/) {}

    /// A mapping element without both ids, which maps nothing.
    virtual void onSkipped(const TiXmlElement& /*element*/) {}
    /// A mapping element without a class list.
    virtual void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                       std::uint32_t minorType) = 0;
    /// A mapping element's class list as it is written. Its classes follow; a list may have none.
    virtual void onClassList(const TiXmlElement& /*element*/, std::uint32_t /*faultId*/,
                             std::uint32_t /*minorType*/, const char* /*classes*/) {}
    /// One class of the list.
    virtual void onMapping(const TiXmlElement& element, std::uint32_t faultId,
                           std::uint32_t minorType, const std::string& moClass) = 0;
};

} // namespace dolq::xmlconf
