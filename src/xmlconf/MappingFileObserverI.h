#pragma once

#include <cstdint>
#include <string>

class TiXmlDocument;
class TiXmlElement;

namespace dolq::xmlconf {

/// Hears what the reader makes of one alarm mapping file, in document order. The document lasts
/// until the reader returns.
class MappingFileObserverI {
public:
    virtual ~MappingFileObserverI() = default;

    /// Whether elements and errors get a row and a column, which costs a fifth of the reading.
    virtual bool wantsPlaces() const { return true; }

    /// Nothing is read: the parser's error is in `document`, or it has none because the file cannot
    /// be read or is beyond the limits.
    virtual void onNotLoaded(const TiXmlDocument& /*document*/) {}
    /// Nothing is read: the document has no element.
    virtual void onNoRoot() {}
    /// The mapping elements among the children of `root` follow.
    virtual void onRoot(const TiXmlElement& /*root*/) {}

    /// A mapping element without both ids.
    virtual void onSkipped(const TiXmlElement& /*element*/) {}
    /// A mapping element without a class list.
    virtual void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                       std::uint32_t minorType) = 0;
    /// One class of a mapping element's list; an element whose list is empty is not heard of.
    virtual void onMapping(const TiXmlElement& element, std::uint32_t faultId,
                           std::uint32_t minorType, const std::string& moClass) = 0;
};

} // namespace dolq::xmlconf
