#pragma once

#include <cstddef>
#include <string>

#include <tinyxml.h>

namespace common {

/// TinyXML parses elements by recursion on the caller's stack and searches an element's attributes
/// one by one for each new one. A text that goes beyond these limits is not parsed.
struct XmlLimits {
    std::size_t depth = 256;
    std::size_t attributes = 1000;
};

/// A TinyXML document whose loading needs bounded stack and linear time whatever the text is, and
/// reads nothing behind it.
class XmlDocument final : public TiXmlDocument {
public:
    explicit XmlDocument(const std::string& name = {}, XmlLimits limits = {})
        : TiXmlDocument(name), m_limits(limits) {}

    /// Loads `text` as `LoadFile` does a file that holds it. False where TinyXML refuses it, which
    /// `Error()` tells, and beyond the limits, where `Error()` is false.
    bool load(std::string text);

    /// Whether TinyXML came to the end of what it loaded: it stops without an error where anything
    /// else than markup stands outside the root.
    bool isLoadedWhole() const { return m_isWhole; }

private:
    const char* Parse(const char* text, TiXmlParsingData* data, TiXmlEncoding encoding) override;

    const XmlLimits m_limits;
    bool m_isWithinLimits = false;
    bool m_isWhole = false;
};

} // namespace common
