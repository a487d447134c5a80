#include "common/XmlDocument.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace common {

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

/// Follows a text as TinyXML's parser does, and with the parser's own functions, so that both see
/// the same elements in any text. It counts levels where the parser recurses, and stores nothing.
class Walk final : private TiXmlDocument { // for access to the functions
public:
    explicit Walk(XmlLimits limits) : m_limits(limits) {}

    bool staysWithin(const char* at) {
        if (std::strncmp(at, kByteOrderMark, std::strlen(kByteOrderMark)) == 0) {
            m_encoding = TIXML_ENCODING_UTF8;
        }
        while (m_withinLimits && (at = SkipWhiteSpace(at, m_encoding)) != nullptr && *at != '\0') {
            at = next(at);
        }
        return m_withinLimits;
    }

private:
    // Each of these is given where a piece begins, and returns where it ends, or null where the
    // parser gives up.

    const char* next(const char* at) {
        if (*at != '<') {
            return m_depth > 0 ? TiXmlText("").Parse(at, nullptr, m_encoding) : nullptr;
        }
        if (m_depth > 0 && at[1] == '/') { // a name that is not the opening one ends the parse
            --m_depth;
            const char* const end = std::strchr(at, '>');
            return end != nullptr ? end + 1 : nullptr;
        }
        if (IsAlpha(static_cast<unsigned char>(at[1]), m_encoding) != 0 || at[1] == '_') {
            return startTag(at);
        }
        const std::unique_ptr<TiXmlNode> node(Identify(at, m_encoding));
        const char* const end = node->Parse(at, nullptr, m_encoding);
        if (m_depth == 0 && m_encoding == TIXML_ENCODING_UNKNOWN &&
            node->ToDeclaration() != nullptr) {
            m_encoding = encodingOf(node->ToDeclaration()->Encoding());
        }
        return end;
    }

    const char* startTag(const char* at) {
        if (m_depth == m_limits.depth) {
            m_withinLimits = false;
            return nullptr;
        }
        at = ReadName(SkipWhiteSpace(at + 1, m_encoding), &m_name, m_encoding);
        for (std::size_t attributes = 0;; ++attributes) {
            at = SkipWhiteSpace(at, m_encoding);
            if (at == nullptr || *at == '\0') {
                return nullptr;
            }
            if (*at == '/') {
                return at[1] == '>' ? at + 2 : nullptr;
            }
            if (*at == '>') {
                ++m_depth;
                return at + 1;
            }
            if (attributes == m_limits.attributes) {
                m_withinLimits = false;
                return nullptr;
            }
            at = m_attribute.Parse(at, nullptr, m_encoding);
        }
    }

    static TiXmlEncoding encodingOf(const char* name) {
        const bool isUtf8 = *name == '\0' ||
                            StringEqual(name, "utf-8", true, TIXML_ENCODING_UNKNOWN) ||
                            StringEqual(name, "utf8", true, TIXML_ENCODING_UNKNOWN);
        return isUtf8 ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY;
    }

    const XmlLimits m_limits;
    TiXmlEncoding m_encoding = TIXML_ENCODING_UNKNOWN;
    std::size_t m_depth = 0;
    bool m_withinLimits = true;
    // The last ones that were read: members, so that their memory is used again.
    std::string m_name;
    TiXmlAttribute m_attribute;
};

bool endsInsideCharacter(const char* text) {
    const std::size_t length = std::strlen(text);
    for (std::size_t left = 1; left <= 3 && left <= length; ++left) {
        const auto lead = static_cast<unsigned char>(text[length - left]);
        if (static_cast<std::size_t>(TiXmlBase::utf8ByteTable[lead]) > left) {
            return true;
        }
    }
    return false;
}

} // namespace

bool XmlDocument::load(std::string text) {
    text.append(3, '\0'); // TinyXML steps over the rest of a last character that is cut off
    std::vector<char> buffer(1024);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        ::fmemopen(text.data(), text.size(), "rb"), &std::fclose);
    if (file == nullptr) {
        throw std::bad_alloc();
    }
    // Allocated here, where a lack of memory is reported: a stream without a buffer would read byte
    // by byte.
    std::setvbuf(file.get(), buffer.data(), _IOFBF, buffer.size());
    return LoadFile(file.get(), TIXML_ENCODING_UNKNOWN) && m_isWithinLimits;
}

/// `LoadFile` calls this with the very text that it parses: its own copy, in which each line end is
/// one byte.
const char* XmlDocument::Parse(const char* text, TiXmlParsingData* data, TiXmlEncoding encoding) {
    m_isWithinLimits = Walk(m_limits).staysWithin(text);
    if (!m_isWithinLimits) {
        return nullptr;
    }
    if (endsInsideCharacter(text)) {
        SetTabSize(0); // some releases count the columns of such a text without end
    }
    const char* const rest = TiXmlDocument::Parse(text, data, encoding);
    m_isWhole = rest == nullptr || *rest == '\0';
    return rest;
}

} // namespace common
