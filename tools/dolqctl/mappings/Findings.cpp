#include "mappings/Findings.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <tuple>

#include <nlohmann/json.hpp>
#include <tinyxml.h>

#include "Output.h"

namespace dolqctl {

namespace {

constexpr wchar_t kInvisible[] =
    L"\u00A0\u00AD\u034F\u115F\u180E\u2007\u200B\u200C\u200D\u200E\u200F\u202A\u202B\u202C\u202D\u202E"
    L"\u202F\u2060\u2061\u2062\u2063\u2064\u2066\u2067\u2068\u2069\u3164\uFE0E\uFE0F\uFEFF";

/// Typographic punctuation, Cyrillic and Greek letters, and below them what they look like.
constexpr wchar_t kLookAlikes[] =
    L"\u2010\u2011\u2013\u2014\u2018\u2019\u201C\u201D\u201E"
    L"\u0410\u0412\u0415\u041A\u041C\u041D\u041E\u0420\u0421\u0422\u0425\u0405\u0406\u0408"
    L"\u0430\u0435\u043E\u0440\u0441\u0443\u0445\u0455\u0456\u0458\u0501"
    L"\u0391\u0392\u0395\u0396\u0397\u0399\u039A\u039C\u039D\u039F\u03A1\u03A4\u03A5\u03A7\u03BF"
    L"\u03BD";
constexpr char kPlain[] = "----''\"\"\""
                          "ABEKMHOPCTXSIJ"
                          "aeopcyxsijd"
                          "ABEZHIKMNOPTYXo"
                          "v";

/// What stands for a character that looks like another one, or like nothing.
std::optional<std::string> plainOf(wchar_t character) {
    if (std::iswspace(static_cast<wint_t>(character)) != 0 ||
        std::iswcntrl(static_cast<wint_t>(character)) != 0 ||
        std::wcschr(kInvisible, character) != nullptr) {
        return "";
    }
    if (const wchar_t* const found = std::wcschr(kLookAlikes, character)) {
        return std::string(1, kPlain[found - kLookAlikes]);
    }
    const bool isFullWidth = character >= L'\uFF01' && character <= L'\uFF5E';
    return isFullWidth ? std::optional(std::string(1, static_cast<char>(character - 0xFEE0)))
                       : std::nullopt;
}

/// The attribute values of the element that `part` is, or is an attribute of; or its text.
std::string valuesAround(const TiXmlBase& part) {
    constexpr std::size_t kMost = 4000; // of one value: a class list can be long
    std::string values;
    const auto* first = dynamic_cast<const TiXmlAttribute*>(&part);
    if (const auto* const node = dynamic_cast<const TiXmlNode*>(&part)) {
        first = node->ToElement() != nullptr ? node->ToElement()->FirstAttribute() : nullptr;
        values = node->ToText() != nullptr ? node->ValueStr() : "";
    }
    while (first != nullptr && first->Previous() != nullptr) {
        first = first->Previous();
    }
    for (; first != nullptr; first = first->Next()) {
        values.append(" ").append(first->Value(), std::min(first->ValueStr().size(), kMost));
    }
    return values;
}

} // namespace

FilePosition positionOf(const std::string& file, const TiXmlBase& part) {
    return {file, part.Row(), part.Column()};
}

std::string positionText(const FilePosition& position) {
    return lineText(position) + (position.column == 0 ? "" : ':' + std::to_string(position.column));
}

std::string lineText(const FilePosition& position) {
    return position.file + (position.line == 0 ? "" : ':' + std::to_string(position.line));
}

bool Findings::hasError() const {
    return std::any_of(m_all.begin(), m_all.end(),
                       [](const Finding& each) { return each.severity == Severity::Error; });
}

void Findings::add(Finding finding) {
    auto& [count, last] = m_kept[{finding.rule, finding.severity}];
    if (count == m_most) {
        ++m_all[last].more;
        return;
    }
    ++count;
    last = m_all.size();
    m_all.push_back(std::move(finding));
}

void Findings::add(Severity severity, const char* rule, const TiXmlBase& part,
                   std::string message) {
    add({positionOf(m_file, part), severity, rule, std::move(message), {}, valuesAround(part)});
}

std::vector<Finding> Findings::take() {
    std::stable_sort(m_all.begin(), m_all.end(), [](const Finding& one, const Finding& other) {
        return std::tie(one.position.line, one.position.column) <
               std::tie(other.position.line, other.position.column);
    });
    m_kept.clear();
    return std::exchange(m_all, {});
}

bool costsTheFile(const Finding& finding) {
    return finding.rule == std::string_view("not-loaded") ||
           finding.rule == std::string_view("no-mapping");
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
    return std::string(attribute.Name()) + '=' + inShortQuotes(attribute.Value());
}

PlainText plainText(std::string_view text) {
    std::vector<std::pair<wchar_t, std::string_view>> characters;
    for (std::size_t length = 0, at = 0; at < text.size(); at += length) {
        wchar_t character = 0;
        std::mbstate_t state{};
        length = std::mbrtowc(&character, &text[at], text.size() - at, &state);
        if (length == 0 || length > text.size()) {
            return {std::string(text), {}, false, false};
        }
        characters.emplace_back(character, text.substr(at, length));
    }
    const auto isForeign = [](const auto& each) {
        return each.first >= 0x0370 && each.first < 0x0530;
    };
    const auto has = [&](auto is) { return std::any_of(characters.begin(), characters.end(), is); };
    const bool isWord = !has([](const auto& each) {
        return std::isalpha(each.second.front()) != 0;
    }) && has([&](const auto& each) { return isForeign(each) && !plainOf(each.first); });
    PlainText plain;
    for (const auto& each : characters) {
        const auto replacement = isWord && isForeign(each) ? std::nullopt : plainOf(each.first);
        plain.letters += replacement ? *replacement : std::string(each.second);
        if (replacement && each.first >= 0x80 && plain.odd.empty()) {
            char name[sizeof("U+FFFFFFFF")];
            std::snprintf(name, sizeof(name), "U+%04X", static_cast<unsigned>(each.first));
            plain.odd = name;
            plain.isInvisible = replacement->empty();
        }
    }
    return plain;
}

std::string folded(const std::string& text) {
    std::string letters = plainText(text).letters;
    std::transform(letters.begin(), letters.end(), letters.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return letters;
}

void to_json(nlohmann::ordered_json& json, const FilePosition& position) {
    json = {{"file", position.file}, {"line", position.line}, {"column", position.column}};
}

void to_json(nlohmann::ordered_json& json, const Finding& finding) {
    json = finding.position;
    json["severity"] = finding.severity == Severity::Error ? "error" : "warning";
    json["rule"] = finding.rule;
    json["message"] = finding.message;
    if (finding.other) {
        json["other"] = *finding.other;
    }
    if (finding.more > 0) {
        json["more"] = finding.more;
    }
}

} // namespace dolqctl
