#include "common/Escape.h"

#include <cstddef>
#include <cstdio>

namespace common {

namespace {

struct Character {
    std::size_t length; // in bytes; 0: the text does not begin with well-formed UTF-8
    char32_t codePoint;
};

constexpr Character kMalformed{0, 0};

Character firstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        return {1, lead};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return kMalformed;
    }
    char32_t codePoint = lead & (0x7Fu >> length);
    for (const char next : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0u) != 0x80) {
            return kMalformed;
        }
        codePoint = (codePoint << 6) | (byte & 0x3Fu);
    }
    constexpr char32_t kSmallestOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (codePoint < kSmallestOfLength[length] || codePoint > 0x10FFFF || surrogate) {
        return kMalformed;
    }
    return {length, codePoint};
}

/// Whether a reader or a terminal might take the character for more than a sign to show.
bool isControl(char32_t codePoint) {
    const auto within = [codePoint](char32_t first, char32_t last) {
        return codePoint >= first && codePoint <= last;
    };
    return codePoint < 0x20 || within(0x7F, 0x9F) // C0, DEL, C1
           || within(0x2028, 0x202E)              // line separators, direction
           || codePoint == 0x61C || within(0x200E, 0x200F) || within(0x2066, 0x2069); // direction
}

void appendEscaped(std::string& line, std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char next : bytes) {
        const auto byte = static_cast<unsigned char>(next);
        switch (next) {
        case '\n':
            line += "\\n";
            break;
        case '\t':
            line += "\\t";
            break;
        case '\\':
            line += "\\\\";
            break;
        default:
            line += "\\x";
            line += kDigits[byte >> 4];
            line += kDigits[byte & 0xFu];
        }
    }
}

std::string escaped(std::string_view text, bool escapeBlanks) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const bool plain = character.length != 0 && !isControl(character.codePoint) &&
                           character.codePoint != '\\' &&
                           !(escapeBlanks && character.codePoint == ' ');
        const std::string_view bytes = text.substr(0, character.length == 0 ? 1 : character.length);
        if (plain) {
            line += bytes;
        } else {
            appendEscaped(line, bytes);
        }
        text.remove_prefix(bytes.size());
    }
    return line;
}

} // namespace

std::string escapedText(std::string_view text) { return escaped(text, false); }

std::string escapedWord(std::string_view word) { return word.empty() ? "-" : escaped(word, true); }

std::string jsonString(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const std::string_view bytes = text.substr(0, character.length == 0 ? 1 : character.length);
        if (character.length == 0) {
            json += "\xEF\xBF\xBD"; // U+FFFD
        } else if (character.codePoint == '\n') {
            json += "\\n";
        } else if (isControl(character.codePoint)) {
            char escape[sizeof "\\u0000"] = "";
            std::snprintf(escape, sizeof escape, "\\u%04x",
                          static_cast<unsigned>(character.codePoint) & 0xFFFFu);
            json += escape;
        } else {
            json += character.codePoint == '"' || character.codePoint == '\\' ? "\\" : "";
            json += bytes;
        }
        text.remove_prefix(bytes.size());
    }
    return json += '"';
}

} // namespace common
