#include "mappings/Findings.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <set>
#include <utility>

#include <tinyxml.h>

#include "Output.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"

namespace dolqctl {

namespace {

constexpr char kWhiteSpace[] = " \t\n\v\f\r";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// What looks like something else, and what that is.
struct LookAlike {
    wchar_t character;
    const char* plain;
};

// clang-format off
constexpr LookAlike kLookAlikes[] = {
    // White space, and nothing at all.
    {L'\u00A0', ""}, {L'\u00AD', ""}, {L'\u2002', ""}, {L'\u2003', ""}, {L'\u2007', ""}, {L'\u2009', ""},
    {L'\u200B', ""}, {L'\u200C', ""}, {L'\u200D', ""}, {L'\u200E', ""}, {L'\u200F', ""}, {L'\u202F', ""},
    {L'\u2060', ""}, {L'\u3000', ""}, {L'\uFEFF', ""},
    // Punctuation that word processors put in.
    {L'\u2010', "-"}, {L'\u2011', "-"}, {L'\u2013', "-"}, {L'\u2014', "-"}, {L'\u2018', "'"}, {L'\u2019', "'"},
    {L'\u201C', "\""}, {L'\u201D', "\""}, {L'\u201E', "\""}, {L'\uFF0C', ","}, {L'\uFF1D', "="},
    // Cyrillic and Greek letters.
    {L'\u0410', "A"}, {L'\u0412', "B"}, {L'\u0415', "E"}, {L'\u041A', "K"}, {L'\u041C', "M"}, {L'\u041D', "H"},
    {L'\u041E', "O"}, {L'\u0420', "P"}, {L'\u0421', "C"}, {L'\u0422', "T"}, {L'\u0425', "X"}, {L'\u0405', "S"},
    {L'\u0406', "I"}, {L'\u0408', "J"}, {L'\u0430', "a"}, {L'\u0435', "e"}, {L'\u043E', "o"}, {L'\u0440', "p"},
    {L'\u0441', "c"}, {L'\u0443', "y"}, {L'\u0445', "x"}, {L'\u0455', "s"}, {L'\u0456', "i"}, {L'\u0458', "j"},
    {L'\u0501', "d"}, {L'\u0391', "A"}, {L'\u0392', "B"}, {L'\u0395', "E"}, {L'\u0396', "Z"}, {L'\u0397', "H"},
    {L'\u0399', "I"}, {L'\u039A', "K"}, {L'\u039C', "M"}, {L'\u039D', "N"}, {L'\u039F', "O"}, {L'\u03A1', "P"},
    {L'\u03A4', "T"}, {L'\u03A5', "Y"}, {L'\u03A7', "X"}, {L'\u03BF', "o"}, {L'\u03BD', "v"}};
// clang-format on

/// What TinyXML passes over. It ends all but comments and CDATA sections at the first '>'.
constexpr struct {
    const char* begin;
    const char* end;
    const char* name;
} kPassedOver[] = {{"<!--", "-->", "comment"},
                   {"<![CDATA[", "]]>", "CDATA section"},
                   {"<?", ">", "declaration"},
                   {"<!", ">", "document type"}};

} // namespace

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* attribute = element.FirstAttribute();
    while (attribute != nullptr && std::strcmp(attribute->Name(), name) != 0) {
        attribute = attribute->Next();
    }
    return attribute;
}

std::string inShortQuotes(std::string_view text) {
    std::size_t length = 80;
    if (text.size() <= length) {
        return inQuotes(text);
    }
    while ((static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80 && length > 0) {
        --length;
    }
    return inQuotes(text.substr(0, length)) + "...";
}

std::string written(const TiXmlAttribute& attribute) {
    return printable(attribute.Name()) + '=' + inShortQuotes(attribute.Value());
}

PlainText plainText(std::string_view text) {
    PlainText plain;
    bool isForeign = false;
    for (std::size_t length = 0, at = 0; at < text.size(); at += length) {
        wchar_t character = static_cast<unsigned char>(text[at]); // as it is where not UTF-8
        std::mbstate_t state{};
        length = std::mbrtowc(&character, &text[at], text.size() - at, &state);
        length = length == 0 || length > text.size() ? 1 : length;
        const std::string_view bytes = text.substr(at, length);
        const bool isAscii = character < 0x80;
        const auto* const found = std::find_if(
            isAscii ? std::end(kLookAlikes) : std::begin(kLookAlikes), std::end(kLookAlikes),
            [&](const LookAlike& each) { return each.character == character; });
        if (found == std::end(kLookAlikes)) {
            plain.letters += bytes;
            plain.visible += bytes;
            isForeign = isForeign || (character >= 0x0370 && character < 0x0530); // Greek, Cyrillic
            continue;
        }
        plain.letters += found->plain;
        plain.visible += *found->plain != '\0' ? bytes : "";
        if (plain.first.empty()) {
            char name[sizeof("U+10FFFF")];
            std::snprintf(name, sizeof(name), "U+%04X", static_cast<unsigned>(character));
            plain.first = name;
        }
    }
    return isForeign ? PlainText{std::string(text), plain.visible, {}} : plain;
}

void addUnknownAttributes(const TiXmlElement& element, const std::vector<const char*>& known,
                          Findings& findings) {
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
        const std::string name = attribute->Name();
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        constexpr std::size_t kShortestPart = 5;
        const std::string letters = blurred(name);
        const auto meant = std::find_if(known.begin(), known.end(), [&](const char* candidate) {
            const bool isPart = letters.size() >= kShortestPart &&
                                blurred(candidate).find(letters) != std::string::npos;
            return (isPart || isMisspelt(name, candidate)) &&
                   element.Attribute(candidate) == nullptr;
        });
        const bool isMistake = meant != known.end();
        findings.add(isMistake ? Severity::Error : Severity::Warning, "unknown-attribute",
                     *attribute,
                     "the attribute " + inShortQuotes(name) + " is ignored" +
                         (isMistake ? ": did you mean '" + std::string(*meant) + "'?" : ""));
    }
}

void addUnreadText(const TiXmlElement& element, Findings& findings) {
    for (const TiXmlNode* node = element.FirstChild(); node != nullptr;
         node = node->NextSibling()) {
        if (const TiXmlText* const text = node->ToText()) {
            const bool isElement = text->ValueStr().find('=') != std::string::npos;
            findings.add(isElement ? Severity::Error : Severity::Warning, "unread-text", *text,
                         std::string(text->CDATA() ? "a CDATA section" : "text") +
                             " is not read: " + inShortQuotes(text->ValueStr()) +
                             (isElement && !text->CDATA() ? "; is a '<' missing?" : ""));
        }
    }
}

bool Findings::hasError() const {
    return std::any_of(m_all.begin(), m_all.end(),
                       [](const Finding& finding) { return finding.severity == Severity::Error; });
}

void Findings::add(Finding finding) {
    if (++m_counts[{finding.rule, finding.severity}] <= m_most) {
        m_all.push_back(std::move(finding));
    }
}

void Findings::add(Severity severity, const char* rule, const TiXmlBase& part,
                   std::string message) {
    add({positionOf(m_file, part), severity, rule, std::move(message)});
}

std::vector<Finding> Findings::take() {
    std::stable_sort(m_all.begin(), m_all.end(), [](const Finding& one, const Finding& other) {
        return std::pair(one.position.line, one.position.column) <
               std::pair(other.position.line, other.position.column);
    });
    for (auto last = m_all.rbegin(); last != m_all.rend(); ++last) {
        std::size_t& count = m_counts[{last->rule, last->severity}];
        last->more = count > m_most ? count - m_most : 0;
        count = 0;
    }
    return std::exchange(m_all, {});
}

namespace {

/// Follows a text with TinyXML's own pieces. Each function gets the place where something begins,
/// and returns where it ends: null where the parser stops.
class Scanner final : private TiXmlDocument { // which has access to the pieces
public:
    Scanner(const std::string& content, XmlText& text, Findings& findings)
        : m_content(content), m_text(text), m_findings(findings) {}

    void scan() {
        const char* at = findBegin();
        bool isBehindRoot = false;
        while (at != nullptr && (at = skip(at)) != end()) {
            const bool isMarkup = *at == '<';
            const bool isPassedOver = isMarkup && (at[1] == '!' || at[1] == '?');
            if (m_open.empty() && !m_text.rootName.empty() && !isPassedOver) {
                if (!std::exchange(isBehindRoot, true)) {
                    add(at, "behind-root",
                        "nothing behind the first root element is read: " + word(at));
                }
                if (!isMarkup) {
                    return;
                }
            }
            if (isMarkup) {
                at = markup(at);
            } else if (m_open.empty()) {
                at = fail(at, "no root element, but " + word(at));
            } else {
                const char* const to = std::strchr(at, '<');
                at = checkReferences(at, to != nullptr ? to : end(), false) ? to : nullptr;
            }
        }
        if (m_text.rootName.empty()) {
            fail(m_content.c_str(), "it has no element");
        } else if (!m_open.empty()) {
            fail(m_open.back(), "the element " + word(m_open.back()) + " is not closed");
        }
    }

private:
    const char* end() const { return m_content.c_str() + m_content.size(); }
    static const char* skip(const char* at) { return at + std::strspn(at, kWhiteSpace); }

    /// And checks the encoding.
    const char* findBegin() {
        const char* const text = m_content.c_str();
        const std::size_t nul = m_content.find('\0');
        if (m_content.empty()) {
            return fail(text, "it is empty");
        }
        if (nul < 2 || m_content.compare(0, 2, "\xFF\xFE") == 0 ||
            m_content.compare(0, 2, "\xFE\xFF") == 0) {
            return fail(text, "it looks like UTF-16: save it as UTF-8");
        }
        if (m_content.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
            m_encoding = TIXML_ENCODING_UTF8;
            m_begin = m_lastAt = text + kByteOrderMark.size();
        }
        if (nul != m_content.npos) {
            fail(text + nul, "a NUL byte ends the text here");
        }
        std::mbstate_t state{};
        std::size_t length = 0;
        for (const char* at = m_begin; at != end(); at += length) {
            const auto left = static_cast<std::size_t>(end() - at);
            length = std::max<std::size_t>(std::mbrlen(at, left, &state), 1); // 0 for a NUL byte
            if (length > left) {
                add(at, "not-utf-8",
                    "the byte " + inQuotes({at, 1}) +
                        " is no UTF-8, and nothing converts it: save the file as UTF-8");
                break;
            }
        }
        return m_begin;
    }

    const char* markup(const char* at) {
        m_suspect = nullptr;
        for (const auto& [begin, end, name] : kPassedOver) {
            if (StringEqual(at, begin, false, m_encoding)) {
                const char* const to = std::strstr(at + std::strlen(begin), end);
                const bool isBehindRoot = m_open.empty() && !m_text.rootName.empty();
                if (to == nullptr && !isBehindRoot) { // where it does not matter
                    return fail(at, std::string("the ") + name + " is not closed");
                }
                if (begin[1] == '?' && m_text.rootName.empty()) {
                    const std::string declaration = blurred({at, to});
                    const bool isOther = declaration.find("encoding") != declaration.npos &&
                                         declaration.find("utf8") == declaration.npos;
                    m_encoding = isOther ? m_encoding : TIXML_ENCODING_UTF8;
                }
                return to != nullptr ? to + std::strlen(end) : nullptr;
            }
        }
        std::string name;
        if (const char* const behind = ReadName(at + 1, &name, m_encoding)) {
            m_text.rootName = m_text.rootName.empty() ? name : m_text.rootName;
            return attributes(at, behind);
        }
        if (at[1] == '/' && !m_open.empty()) {
            return endTag(at);
        }
        if (m_text.rootName.empty() || !m_open.empty()) {
            add(at, "unread-text",
                "this '<' begins no element: nothing up to the next '>' is read; write \"&lt;\" "
                "for the character");
        }
        const char* const to = std::strchr(at, '>');
        return to != nullptr ? to + 1 : nullptr;
    }

    /// From `at` on, of the tag that begins at `tag`.
    const char* attributes(const char* tag, const char* at) {
        std::set<std::string> names;
        while (at != nullptr && *(at = skip(at)) != '\0') {
            if (*at == '>') {
                m_open.push_back(tag);
                return at + 1;
            }
            if (*at == '/') {
                return at[1] == '>' ? at + 2 : fail(at, "a '/' without '>' behind it");
            }
            at = attribute(at, names);
        }
        return fail(tag, "the tag " + word(tag) + " is not complete");
    }

    const char* attribute(const char* at, std::set<std::string>& names) {
        std::string name;
        const char* const behind = ReadName(at, &name, m_encoding);
        if (behind == nullptr) {
            return fail(at, "an attribute or '>' is missing before " + word(at));
        }
        if (!names.insert(name).second) {
            return fail(at, "the attribute " + inShortQuotes(name) + " is there twice");
        }
        const char* const equals = skip(behind);
        if (*equals != '=') {
            return fail(at, "the attribute " + inShortQuotes(name) + " has no value");
        }
        const char* const begin = skip(equals + 1);
        const bool isQuoted = *begin == '"' || *begin == '\'';
        const char* const to =
            isQuoted ? std::strchr(begin + 1, *begin) : std::strpbrk(begin, " \t\n\v\f\r/>\"'");
        if (isQuoted && m_suspect == nullptr &&
            (to == nullptr || std::find(begin, to, '<') != to)) {
            m_suspect = begin;
        }
        if (to == nullptr || !checkReferences(begin, to, true)) {
            return nullptr;
        }
        if (!isQuoted && (*to == '"' || *to == '\'')) {
            return fail(to, "a quotation mark that nothing opened");
        }
        return isQuoted ? to + 1 : to;
    }

    /// False where the parser stops; `isRead`: somebody uses the value.
    bool checkReferences(const char* at, const char* to, bool isRead) {
        for (; (at = std::find(at, to, '&')) != to; ++at) {
            char bytes[8];
            int length = 0;
            const char* const behind = GetEntity(at, bytes, &length, m_encoding);
            if (behind == nullptr) {
                fail(at, word(at) + " is no character");
                return false;
            }
            const bool isNumber = at[1] == '#';
            if (!isRead || (!isNumber && length > 0)) {
                continue;
            }
            if (!isNumber) {
                add(at, "unknown-entity",
                    "the '&' is left out: write \"&amp;\" for it, or the character that is meant");
                continue;
            }
            const bool isHexadecimal = at[2] == 'x';
            const unsigned long code =
                std::strtoul(at + (isHexadecimal ? 3 : 2), nullptr, isHexadecimal ? 16 : 10);
            const std::string reference = inShortQuotes({at, std::size_t(behind - at)});
            if (code == 0 || code > 0x10FFFF) {
                add(at, "character-reference",
                    reference + " is no character" + (code == 0 ? ": the value ends here" : ""));
            } else if (code >= 0x80 && m_encoding != TIXML_ENCODING_UTF8) {
                add(at, "character-reference",
                    reference + " becomes a single byte in a file that does not say that it is "
                                "UTF-8: begin it with <?xml version=\"1.0\" encoding=\"UTF-8\"?>");
            }
        }
        return true;
    }

    const char* endTag(const char* at) {
        std::string name;
        ReadName(m_open.back() + 1, &name, m_encoding);
        const bool isSame = std::strncmp(at + 2, name.c_str(), name.size()) == 0;
        const char* const behind = isSame ? skip(at + 2 + name.size()) : at;
        if (*behind != '>') {
            const std::string line = std::to_string(positionOf(m_open.back()).line);
            return fail(at,
                        word(at) + " does not close " + word(m_open.back()) + " of line " + line);
        }
        m_open.pop_back();
        return behind + 1;
    }

    /// The first failure counts, as with TinyXML.
    const char* fail(const char* at, std::string reason) {
        if (m_text.failure.empty()) {
            const bool isSuspect = m_suspect != nullptr && m_suspect < at;
            m_text.failedAt = positionOf(isSuspect ? m_suspect : at);
            m_text.failure = isSuspect
                                 ? "the value that begins here has no quotation mark at its end"
                                 : std::move(reason);
        }
        m_open.clear();
        return nullptr;
    }

    void add(const char* at, const char* rule, const std::string& message) {
        m_findings.add({positionOf(at), Severity::Error, rule, message});
    }

    /// The beginning of what stands at `at`, in quotes.
    std::string word(const char* at) const {
        constexpr std::size_t kLongest = 20;
        const auto left = static_cast<std::size_t>(end() - at);
        const std::string_view rest(at, std::min(kLongest, left));
        const std::size_t to = std::min(rest.find_first_of(" \t\n\v\f\r/>", 2), rest.size());
        return inQuotes(rest.substr(0, to + (*(at + to) == '>' ? 1 : 0)));
    }

    /// Goes on from the last one, for many of them.
    FilePosition positionOf(const char* at) {
        if (at < m_lastAt) {
            m_lastAt = m_begin;
            m_last = {m_findings.file(), 1, 1};
        }
        for (; m_lastAt < at; ++m_lastAt) {
            if (*m_lastAt == '\n' || (*m_lastAt == '\r' && m_lastAt[1] != '\n')) {
                ++m_last.line;
                m_last.column = 1;
            } else if ((static_cast<unsigned char>(*m_lastAt) & 0xC0U) != 0x80) {
                ++m_last.column;
            }
        }
        return m_last;
    }

    const std::string& m_content;
    XmlText& m_text;
    Findings& m_findings;
    const char* m_begin = m_content.c_str(); ///< behind a byte order mark
    TiXmlEncoding m_encoding = TIXML_ENCODING_UNKNOWN;
    std::vector<const char*> m_open; ///< where the elements that are not closed yet begin
    const char* m_suspect = nullptr; ///< a value in this tag that goes on too far
    const char* m_lastAt = m_begin;
    FilePosition m_last{m_findings.file(), 1, 1}; ///< of `m_lastAt`
};

} // namespace

XmlText checkText(const std::string& path, Findings& findings) {
    XmlText text;
    std::string content;
    text.readError = common::readRegularFile(path, content.max_size(), content);
    if (text.readError == 0) {
        Scanner(content, text, findings).scan();
    } else if (text.readError == EISDIR || text.readError == EINVAL) {
        text.failure = "not a regular file";
    } else {
        text.failure = std::strerror(text.readError);
    }
    text.failedAt.file = findings.file();
    return text;
}

void addNotLoaded(const XmlText& text, const TiXmlDocument& document, Findings& findings) {
    Finding finding{text.failedAt, Severity::Error, "not-loaded", text.failure};
    if (document.Error() && text.failure.empty()) {
        finding.position = {findings.file(), document.ErrorRow(), document.ErrorCol()};
        finding.message = document.ErrorDesc();
    } else if (text.failure.empty()) {
        const common::XmlLimits limits;
        finding.message = "not given to the parser: more than " + std::to_string(limits.depth) +
                          " levels of elements, or more than " + std::to_string(limits.attributes) +
                          " attributes in one";
    }
    finding.message.insert(0, "the file is not read: ");
    findings.add(std::move(finding));
}

} // namespace dolqctl
