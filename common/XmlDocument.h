#pragma once

#include <cstddef>
#include <string>

#include <tinyxml.h>

namespace common {

/// TinyXML parses elements by recursion on the caller's stack, and searches the attributes of an
/// element for each new one. A text beyond these limits is not parsed.
struct XmlLimits {
    std::size_t depth = 256;
    std::size_t attributes = 1000;
};

/// A TinyXML document that loads any text with bounded stack and in linear time, and reads no byte
/// after it. What it holds then is what TinyXML alone makes of the text.
class XmlDocument final : public TiXmlDocument {
public:
    explicit XmlDocument(const std::string& name = {}, XmlLimits limits = {})
        : TiXmlDocument(name), m_limits(limits) {}

    /// Loads `text` as `LoadFile` loads a file of this content. Returns false if TinyXML refuses
    /// it, and `Error()` is then true; or if it is beyond the limits, and `Error()` is then false.
    bool load(std::string text);

    /// Whether TinyXML came to the end of the text. It stops without an error where anything but
    /// markup stands outside the root.
    bool isLoadedWhole() const { return m_isWhole; }

private:
    const char* Parse(const char* text, TiXmlParsingData* data, TiXmlEncoding encoding) override;

    const XmlLimits m_limits;
    bool m_isWithinLimits = false;
    bool m_isWhole = false;
};

} // namespace common
