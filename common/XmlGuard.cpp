#include "common/XmlGuard.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

#include "common/RegularFile.h"

namespace common {

namespace {

/// `ParserStops`: TinyXML itself refuses the text here, so nothing of what follows reaches it.
enum class Verdict { GoOn, ParserStops, Unsafe };

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// TinyXML asks the process's locale what a byte is. No locale differs on ASCII, which is nearly all
// that is ever asked, so that the C library's call is kept for the rest.

constexpr bool isAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

bool isBlank(char byte) {
    return isAscii(byte) ? byte == ' ' || (byte >= '\t' && byte <= '\r')
                         : std::isspace(static_cast<unsigned char>(byte)) != 0;
}

constexpr bool isQuote(char byte) { return byte == '"' || byte == '\''; }

bool endsUnquotedValue(char byte) {
    return isBlank(byte) || isQuote(byte) || byte == '/' || byte == '>';
}

constexpr bool isNameStart(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' ||
           byte == '\x7F' || !isAscii(byte);
}

/// By byte: a mapping file is names and short values, and each of their bytes is asked for.
template <typename Holds> constexpr std::array<bool, 256> makeTable(Holds holds) {
    std::array<bool, 256> table{};
    for (std::size_t code = 0; code < table.size(); ++code) {
        table[code] = holds(static_cast<char>(code));
    }
    return table;
}

constexpr std::array<bool, 256> kNameParts = makeTable([](char byte) {
    return isNameStart(byte) || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.' ||
           byte == ':';
});

/// What neither ends a text, whatever it stands in, nor belongs to a longer character.
constexpr std::array<bool, 256> kPlain = makeTable(
    [](char byte) { return isAscii(byte) && !isQuote(byte) && byte != '<' && byte != '&'; });

bool isNamePart(char byte) { return kNameParts[static_cast<unsigned char>(byte)]; }

bool isPlain(char byte) { return kPlain[static_cast<unsigned char>(byte)]; }

/// Length of the UTF-8 character that `byte` begins; 1 for a byte that begins none.
std::size_t utf8Length(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0xC2 || code > 0xF4) {
        return 1;
    }
    return code < 0xE0 ? 2 : code < 0xF0 ? 3 : 4;
}

/// Walks over a text in the tokens that TinyXML makes of it, without recursion and without storing
/// anything. It has to agree with TinyXML, oddities included, on where each token ends: a quote
/// or a closing tag that only one of the two sees would hide a depth.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_rest(text.substr(0, text.find('\0'))), // TinyXML stops there
          m_utf8(startsWith(kByteOrderMark)), m_encodingKnown(m_utf8) {}

    bool isSafe() {
        if (m_rest.size() >= 2 && m_rest.substr(m_rest.size() - 2).find('\xEF') != m_rest.npos) {
            return false; // some releases count lines for ever at half a byte order mark
        }
        Verdict verdict = Verdict::GoOn;
        while (verdict == Verdict::GoOn) {
            verdict = next();
        }
        return verdict == Verdict::ParserStops;
    }

private:
    bool startsWith(std::string_view prefix) const {
        return m_rest.substr(0, prefix.size()) == prefix;
    }

    /// `prefix` in lower case.
    bool startsWithAnyCase(std::string_view prefix) const {
        if (m_rest.size() < prefix.size()) {
            return false;
        }
        for (std::size_t i = 0; i < prefix.size(); ++i) {
            if (std::tolower(static_cast<unsigned char>(m_rest[i])) != prefix[i]) {
                return false;
            }
        }
        return true;
    }

    void skipBlanks() {
        if (!m_rest.empty() && (m_rest.front() <= ' ' || !isAscii(m_rest.front()))) {
            skipBlankRun();
        }
    }

    void skipBlankRun() {
        do {
            std::size_t at = 0;
            while (at < m_rest.size() && isBlank(m_rest[at])) {
                ++at;
            }
            m_rest.remove_prefix(at);
        } while (m_utf8 && !m_rest.empty() && m_rest.front() == kByteOrderMark.front() &&
                 skipUtf8Blank());
    }

    /// What TinyXML takes for white space as well in UTF-8. Out of line: it is rare.
    [[gnu::noinline]] bool skipUtf8Blank() {
        const bool found =
            startsWith(kByteOrderMark) || startsWith("\xEF\xBF\xBE") || startsWith("\xEF\xBF\xBF");
        m_rest.remove_prefix(found ? 3 : 0);
        return found;
    }

    Verdict skipPast(std::string_view end, std::size_t from) {
        const std::size_t found = m_rest.find(end, from);
        if (found == m_rest.npos) {
            return Verdict::ParserStops;
        }
        m_rest.remove_prefix(found + end.size());
        return Verdict::GoOn;
    }

    Verdict next() {
        skipBlanks();
        if (m_rest.empty()) {
            return Verdict::ParserStops;
        }
        if (m_rest.front() == '<') {
            return markup();
        }
        return m_depth == 0 ? Verdict::ParserStops : skipCharactersTo('<');
    }

    Verdict markup() {
        if (m_rest.size() > 1 && isNameStart(m_rest[1])) { // first: nearly all of the markup
            return element();
        }
        if (m_depth > 0 && startsWith("</")) {
            --m_depth; // a name that differs from the opening one ends the parse
            return skipPast(">", 2);
        }
        if (startsWithAnyCase("<?xml")) {
            return declaration();
        }
        if (startsWith("<!--")) {
            return skipPast("-->", 4);
        }
        if (startsWith("<![CDATA[")) {
            return skipPast("]]>", 9);
        }
        return skipPast(">", 1);
    }

    Verdict declaration() {
        std::string_view encoding;
        m_rest.remove_prefix(5);
        while (!m_rest.empty() && m_rest.front() != '>') {
            skipBlanks();
            std::string_view value;
            const bool namesEncoding = startsWithAnyCase("encoding");
            if (namesEncoding || startsWithAnyCase("version") || startsWithAnyCase("standalone")) {
                const Verdict verdict = attribute(value);
                if (verdict != Verdict::GoOn) {
                    return verdict;
                }
                encoding = namesEncoding ? value : encoding;
            } else {
                while (!m_rest.empty() && m_rest.front() != '>' && !isBlank(m_rest.front())) {
                    m_rest.remove_prefix(1);
                }
            }
        }
        if (m_rest.empty()) {
            return Verdict::Unsafe; // some releases fail an assertion here
        }
        m_rest.remove_prefix(1);
        return m_depth == 0 && !m_encodingKnown ? useEncoding(encoding) : Verdict::GoOn;
    }

    Verdict useEncoding(std::string_view name) {
        if (name.find('&') != name.npos) {
            return Verdict::Unsafe; // not decoded here
        }
        std::string lower;
        for (const char byte : name.substr(0, 5)) {
            lower += static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
        }
        m_utf8 = lower.empty() || lower == "utf-8" || lower.substr(0, 4) == "utf8";
        m_encodingKnown = true;
        return Verdict::GoOn;
    }

    Verdict element() {
        if (m_depth == kMaxElementDepth) {
            return Verdict::Unsafe;
        }
        m_rest.remove_prefix(1);
        skipBlanks();
        if (!skipName()) {
            return Verdict::ParserStops;
        }
        for (std::size_t attributes = 0;; ++attributes) {
            skipBlanks();
            if (m_rest.empty()) {
                return Verdict::ParserStops;
            }
            if (m_rest.front() == '>') {
                ++m_depth;
                m_rest.remove_prefix(1);
                return Verdict::GoOn;
            }
            if (m_rest.front() == '/') {
                m_rest.remove_prefix(startsWith("/>") ? 2 : m_rest.size());
                return Verdict::GoOn;
            }
            std::string_view value;
            const Verdict verdict =
                attributes == kMaxAttributes ? Verdict::Unsafe : attribute(value);
            if (verdict != Verdict::GoOn) {
                return verdict;
            }
        }
    }

    bool skipName() {
        if (m_rest.empty() || !isNameStart(m_rest.front())) {
            return false;
        }
        std::size_t length = 1;
        while (length < m_rest.size() && isNamePart(m_rest[length])) {
            ++length;
        }
        m_rest.remove_prefix(length);
        return true;
    }

    Verdict attribute(std::string_view& value) {
        skipBlanks();
        if (!skipName()) {
            return Verdict::ParserStops;
        }
        skipBlanks();
        if (m_rest.empty() || m_rest.front() != '=') {
            return Verdict::ParserStops;
        }
        m_rest.remove_prefix(1);
        skipBlanks();
        const std::string_view begin = m_rest;
        if (!begin.empty() && isQuote(begin.front())) {
            m_rest.remove_prefix(1);
            const Verdict verdict = skipCharactersTo(begin.front());
            if (verdict == Verdict::GoOn) {
                value = begin.substr(1, begin.size() - m_rest.size() - 1);
                m_rest.remove_prefix(1);
            }
            return verdict;
        }
        const auto stop = std::find_if(begin.begin(), begin.end(), endsUnquotedValue);
        if (stop == begin.end() || isQuote(*stop)) {
            return Verdict::ParserStops;
        }
        const auto length = static_cast<std::size_t>(stop - begin.begin());
        value = begin.substr(0, length);
        m_rest.remove_prefix(length);
        return Verdict::GoOn;
    }

    /// Stops in front of `end`, a quote or '<', which an entity or a UTF-8 character can swallow.
    Verdict skipCharactersTo(char end) {
        for (std::size_t at = 0;;) {
            while (at < m_rest.size() && isPlain(m_rest[at])) {
                ++at;
            }
            if (at == m_rest.size()) {
                return Verdict::ParserStops;
            }
            const char byte = m_rest[at];
            if (byte == end) {
                m_rest.remove_prefix(at);
                return Verdict::GoOn;
            }
            if (byte == '&') {
                const std::size_t length = entityLength(m_rest.substr(at));
                if (length == 0) {
                    return Verdict::ParserStops;
                }
                at += length;
                continue;
            }
            at = characterEnd(at, m_utf8 ? utf8Length(byte) : 1);
            if (at == m_rest.npos) {
                return Verdict::Unsafe; // TinyXML would step over the end of its buffer
            }
        }
    }

    /// Where a character of `length` bytes at `at` ends, whatever its bytes are; npos if behind the
    /// text. TinyXML has made one byte of CR LF beforehand.
    std::size_t characterEnd(std::size_t at, std::size_t length) const {
        for (; length > 0 && at < m_rest.size(); --length) {
            at += m_rest.substr(at, 2) == "\r\n" ? 2 : 1;
        }
        return length == 0 ? at : m_rest.npos;
    }

    /// How much of `text` TinyXML takes for one character; 0 where it gives up. A numeric reference
    /// reaches to the next semicolon, wherever that is, if only its last digits are digits.
    static std::size_t entityLength(std::string_view text) {
        if (text.size() < 3 || text[1] != '#') {
            return 1;
        }
        const bool isHex = text[2] == 'x';
        const std::size_t semicolon = text.find(';', 2);
        if (semicolon == text.npos) {
            return 0;
        }
        std::size_t digit = semicolon - 1;
        while (text[digit] != (isHex ? 'x' : '#')) {
            const auto code = static_cast<unsigned char>(text[digit]);
            if (isHex ? std::isxdigit(code) == 0 : std::isdigit(code) == 0) {
                return 0;
            }
            --digit;
        }
        return semicolon + 1;
    }

    std::string_view m_rest;
    bool m_utf8;
    bool m_encodingKnown;
    std::size_t m_depth = 0;
};

} // namespace

bool isSafeText(std::string_view text) { return Scanner(text).isSafe(); }

bool isSafeToParse(std::FILE* file) {
    std::string content;
    return readWhole(file, std::numeric_limits<std::size_t>::max(), content) == 0 &&
           isSafeText(content);
}

} // namespace common
