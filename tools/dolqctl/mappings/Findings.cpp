#include "mappings/Findings.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <numeric>
#include <utility>

#include <tinyxml.h>

#include "Output.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"

namespace dolqctl {

namespace {

constexpr char kWhiteSpace[] = " \t\n\v\f\r";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr char kDigits[] = "0123456789abcdefABCDEF";

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
    std::string_view begin;
    std::string_view end;
    const char* name;
} kPassedOver[] = {{"<!--", "-->", "comment"},
                   {"<![CDATA[", "]]>", "CDATA section"},
                   {"<?", ">", "declaration"},
                   {"<!", ">", "document type"}};

constexpr std::string_view kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};

bool startsWith(std::string_view text, std::string_view begin) {
    return text.substr(0, begin.size()) == begin;
}

bool isNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 ||
           static_cast<unsigned char>(c) > 127 || c == '_';
}

/// How many characters have to be changed, added or removed to make `to` of `from`.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// The letters and digits of `name`, in lower case.
std::string blurred(const std::string& name) {
    std::string letters;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

} // namespace

const char* severityText(Severity severity) {
    return severity == Severity::Error ? "error" : "warning";
}

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

bool isMisspelt(const std::string& name, const std::string& meant) {
    constexpr std::size_t kMostMistakes = 2;
    return name.size() <= meant.size() + 2 * kMostMistakes &&
           distance(blurred(name), blurred(meant)) <= kMostMistakes;
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

XmlText::XmlText(const std::string& path, Findings& findings) : m_findings(findings) {
    m_readError = common::readRegularFile(path, m_text.max_size(), m_text);
    if (!isRead()) {
        return;
    }
    checkEncoding();
    std::size_t at = m_begin;
    bool isBehindRoot = false;
    while ((at = m_text.find_first_not_of(kWhiteSpace, at)) != m_text.npos) {
        const bool isMarkup = m_text[at] == '<';
        const bool isPassedOver = isMarkup && (m_text[at + 1] == '!' || m_text[at + 1] == '?');
        if (m_open.empty() && !m_rootName.empty() && !isPassedOver) {
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
            const std::size_t end = m_text.find('<', at);
            at = checkReferences(at, std::min(end, m_text.size()), false) ? end : m_text.npos;
        }
    }
    if (m_rootName.empty()) {
        fail(0, "it has no element");
    } else if (!m_open.empty()) {
        fail(m_open.back(), "the element " + word(m_open.back()) + " is not closed");
    }
}

void XmlText::checkEncoding() {
    m_isUtf8 = startsWith(m_text, kByteOrderMark);
    m_begin = m_isUtf8 ? kByteOrderMark.size() : 0;
    const std::size_t nul = m_text.find('\0');
    if (m_text.empty()) {
        fail(0, "it is empty");
    } else if (nul < 2 || startsWith(m_text, "\xFF\xFE") || startsWith(m_text, "\xFE\xFF")) {
        fail(0, "it looks like UTF-16: save it as UTF-8");
        m_begin = m_text.size();
        return;
    } else if (nul != m_text.npos) {
        fail(nul, "a NUL byte ends the text here");
    }
    std::mbstate_t state{};
    for (std::size_t at = 0; at < m_text.size();) {
        const bool isAscii = static_cast<unsigned char>(m_text[at]) < 0x80;
        const std::size_t length =
            isAscii ? 1 : std::mbrlen(&m_text[at], m_text.size() - at, &state);
        if (length > m_text.size()) {
            add(at, "not-utf-8",
                "the byte " + inQuotes(m_text.substr(at, 1)) +
                    " is no UTF-8, and nothing converts it: save the file as UTF-8");
            return;
        }
        at += length;
    }
}

std::size_t XmlText::markup(std::size_t at) {
    m_suspect = m_text.npos;
    for (const auto& [begin, end, name] : kPassedOver) {
        if (m_text.compare(at, begin.size(), begin) != 0) {
            continue;
        }
        const std::size_t to = m_text.find(end, at + begin.size());
        if (to == m_text.npos) { // which does not matter behind the root
            return m_open.empty() && !m_rootName.empty()
                       ? to
                       : fail(at, std::string("the ") + name + " is not closed");
        }
        if (startsWith(begin, "<?") && m_rootName.empty()) {
            const std::string declaration = blurred(m_text.substr(at, to - at));
            m_isUtf8 = m_isUtf8 || declaration.find("encoding") == declaration.npos ||
                       declaration.find("utf8") != declaration.npos;
        }
        return to + end.size();
    }
    if (isNameStart(m_text[at + 1])) {
        return startTag(at);
    }
    if (m_text[at + 1] == '/' && !m_open.empty()) {
        return endTag(at);
    }
    const std::size_t to = m_text.find('>', at);
    if (m_rootName.empty() || !m_open.empty()) {
        add(at, "unread-text",
            "this '<' begins no element: nothing up to the next '>' is read; write \"&lt;\" for the "
            "character");
    }
    return to != m_text.npos ? to + 1 : to;
}

std::size_t XmlText::startTag(std::size_t at) {
    const std::string_view name = nameAt(at + 1);
    if (m_rootName.empty()) {
        m_rootName = name;
    }
    std::vector<std::string_view> names;
    std::size_t next = at + 1 + name.size();
    while ((next = m_text.find_first_not_of(kWhiteSpace, next)) != m_text.npos) {
        if (m_text[next] == '>') {
            m_open.push_back(at);
            return next + 1;
        }
        if (m_text[next] == '/') {
            return m_text[next + 1] == '>' ? next + 2 : fail(next, "a '/' without '>' behind it");
        }
        next = attribute(next, names);
        if (next == m_text.npos) {
            break;
        }
    }
    return fail(at, "the tag " + word(at) + " is not complete");
}

std::size_t XmlText::attribute(std::size_t at, std::vector<std::string_view>& names) {
    const std::string_view name = nameAt(at);
    if (!isNameStart(m_text[at])) {
        return fail(at, "an attribute or '>' is missing before " + word(at));
    }
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        return fail(at, "the attribute " + inShortQuotes(name) + " is there twice");
    }
    names.push_back(name);
    const std::size_t equals = m_text.find_first_not_of(kWhiteSpace, at + name.size());
    if (equals == m_text.npos || m_text[equals] != '=') {
        return fail(at, "the attribute " + inShortQuotes(name) + " has no value");
    }
    std::size_t begin = std::min(m_text.find_first_not_of(kWhiteSpace, equals + 1), m_text.size());
    const bool isQuoted = m_text[begin] == '"' || m_text[begin] == '\'';
    const std::size_t end = isQuoted ? m_text.find(m_text[begin], begin + 1)
                                     : m_text.find_first_of(" \t\n\v\f\r/>\"'", begin);
    if (isQuoted && (end == m_text.npos || m_text.find('<', begin) < end)) {
        m_suspect = std::min(m_suspect, begin);
    }
    if (end == m_text.npos || !checkReferences(begin, end, true)) {
        return m_text.npos;
    }
    if (!isQuoted && (m_text[end] == '"' || m_text[end] == '\'')) {
        return fail(end, "a quotation mark that nothing opened");
    }
    return isQuoted ? end + 1 : end;
}

/// False where the parser stops; `isRead`: somebody uses the value.
bool XmlText::checkReferences(std::size_t begin, std::size_t end, bool isRead) {
    const std::string_view value = std::string_view(m_text).substr(begin, end - begin);
    for (std::size_t at = value.find('&'); at != value.npos; at = value.find('&', at + 1)) {
        const std::string_view rest = value.substr(at);
        if (std::any_of(std::begin(kEntities), std::end(kEntities),
                        [&](std::string_view entity) { return startsWith(rest, entity); })) {
            continue;
        }
        if (!startsWith(rest, "&#")) {
            if (!isRead) {
                continue;
            }
            const std::string_view name = nameAt(begin + at + 1);
            const bool isEntity = !name.empty() && rest[1 + name.size()] == ';';
            add(begin + at, "unknown-entity",
                "the '&' is left out: write \"&amp;\" for it" +
                    (isEntity ? ", or the character that " +
                                    inShortQuotes(rest.substr(0, name.size() + 2)) + " means"
                              : ""));
            continue;
        }
        const bool isHexadecimal = startsWith(rest, "&#x");
        const std::size_t digits = isHexadecimal ? 3 : 2;
        const std::size_t semicolon = rest.find(';');
        const std::string reference(rest.substr(0, std::min(semicolon, std::size_t{11}) + 1));
        if (semicolon == rest.npos ||
            rest.find_first_not_of({kDigits, isHexadecimal ? 22U : 10U}, digits) != semicolon) {
            fail(begin + at, inShortQuotes(reference) + " is no character");
            return false;
        }
        const unsigned long code =
            std::strtoul(reference.c_str() + digits, nullptr, isHexadecimal ? 16 : 10);
        if (!isRead) {
            continue;
        }
        if (code == 0 || code > 0x10FFFF) {
            add(begin + at, "character-reference",
                inShortQuotes(reference) + " is no character" +
                    (code == 0 ? ": the value ends here" : ""));
        } else if (code >= 0x80 && !m_isUtf8) {
            add(begin + at, "character-reference",
                inShortQuotes(reference) +
                    " becomes a single byte in a file that does not say that it is "
                    "UTF-8: begin it with <?xml version=\"1.0\" "
                    "encoding=\"UTF-8\"?>");
        }
    }
    return true;
}

std::size_t XmlText::endTag(std::size_t at) {
    const std::string_view name = nameAt(m_open.back() + 1);
    const std::size_t behind = m_text.find_first_not_of(kWhiteSpace, at + 2 + name.size());
    if (m_text.compare(at + 2, name.size(), name) != 0 || behind == m_text.npos ||
        m_text[behind] != '>') {
        const std::string line = std::to_string(positionOf(m_open.back()).line);
        return fail(at, word(at) + " does not close " + word(m_open.back()) + " of line " + line);
    }
    m_open.pop_back();
    return behind + 1;
}

/// The first failure counts, as with TinyXML.
std::size_t XmlText::fail(std::size_t at, std::string reason) {
    if (m_failure.empty()) {
        const bool isSuspect = m_suspect < at;
        m_failedAt = positionOf(isSuspect ? m_suspect : at);
        m_failure = isSuspect ? "the value that begins here has no quotation mark at its end"
                              : std::move(reason);
    }
    m_open.clear();
    return m_text.npos;
}

void XmlText::add(std::size_t at, const char* rule, const std::string& message) {
    m_findings.add({positionOf(at), Severity::Error, rule, message});
}

std::string_view XmlText::nameAt(std::size_t at) const {
    std::size_t end = at;
    while (isNameStart(m_text[end]) || std::isdigit(static_cast<unsigned char>(m_text[end])) != 0 ||
           m_text[end] == '-' || m_text[end] == '.' || m_text[end] == ':') {
        ++end;
    }
    return std::string_view(m_text).substr(at, end - at);
}

/// The beginning of what stands at `at`, in quotes.
std::string XmlText::word(std::size_t at) const {
    constexpr std::size_t kLongest = 20;
    const std::size_t end = std::min(m_text.find_first_of(" \t\n\v\f\r/>", at + 2), m_text.size());
    return inQuotes(m_text.substr(at, std::min(end - at + (m_text[end] == '>' ? 1 : 0), kLongest)));
}

/// Goes on from the last one, for many of them.
FilePosition XmlText::positionOf(std::size_t at) {
    if (at < m_lastAt || m_last.line == 0) {
        m_lastAt = m_begin;
        m_last = {m_findings.file(), 1, 1};
    }
    for (; m_lastAt < at; ++m_lastAt) {
        const char c = m_text[m_lastAt];
        if (c == '\n' || (c == '\r' && m_text[m_lastAt + 1] != '\n')) {
            ++m_last.line;
            m_last.column = 1;
        } else if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80) {
            ++m_last.column;
        }
    }
    return m_last;
}

void XmlText::addNotLoaded(const TiXmlDocument& document) const {
    Finding finding{m_failedAt, Severity::Error, "not-loaded", m_failure};
    if (m_failure.empty()) {
        finding.position = {m_findings.file()};
        if (document.Error()) {
            finding.position = {m_findings.file(), document.ErrorRow(), document.ErrorCol()};
        }
        finding.message = whyNotLoaded(document);
    }
    finding.message.insert(0, "the file is not read: ");
    m_findings.add(std::move(finding));
}

/// For a text in which nothing was found.
std::string XmlText::whyNotLoaded(const TiXmlDocument& document) const {
    if (document.Error()) {
        return document.ErrorDesc();
    }
    if (m_readError == EISDIR || m_readError == EINVAL) {
        return "not a regular file";
    }
    if (m_readError != 0) {
        return std::strerror(m_readError);
    }
    return "not given to the parser: more than " + std::to_string(common::XmlLimits().depth) +
           " levels of elements, or more than " + std::to_string(common::XmlLimits().attributes) +
           " attributes in one";
}

} // namespace dolqctl
