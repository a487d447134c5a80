#include "MappingFiles.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include "Output.h"
#include "adapter/MinorType.h"

namespace dolqctl {

std::string positionText(const FilePosition& position) {
    return position.file + (position.line == 0 ? "" : ':' + std::to_string(position.line)) +
           (position.column == 0 ? "" : ':' + std::to_string(position.column));
}

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

Finding::Finding(FilePosition at, Rule ofRule, const std::vector<std::string>& texts)
    : position(std::move(at)), rule(ofRule) {
    auto text = texts.begin();
    for (const char c : std::string(ruleText().sentence)) {
        message += c == '$' ? shortened(*text++) : std::string(1, c);
    }
}

bool Finding::isAbout(std::uint32_t faultId, const std::string& moClass) const {
    const char* number = element != nullptr ? element->faultId.c_str() : "";
    number += std::strcspn(number, "-0123456789");
    if (*number == '\0' ||
        static_cast<std::uint32_t>(std::strtoll(number, nullptr, 10)) != faultId) {
        return false;
    }
    const std::wstring classes = L',' + lookOf(element->classes).folded + L',';
    return moClass.empty() || classes.find(L',' + lookOf(moClass).folded + L',') != classes.npos;
}

Look lookOf(const std::string& text) {
    Look look;
    std::wstring wide(text.size(), L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
    if (length > wide.size()) {
        return {"what is not UTF-8", true, {text.begin(), text.end()}};
    }
    wide.resize(length);
    const bool isLatin =
        std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
    for (const wchar_t c : wide) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): a wchar_t is no char
        const auto character = static_cast<wint_t>(c);
        const bool isUnseen = std::iswspace(character) != 0 || std::iswcntrl(character) != 0 ||
                              c == 0xA0 || c == 0xAD || (c >= 0x2000 && c < 0x2070) ||
                              (c >= 0x180B && wcwidth(c) == 0);
        // Greek, Cyrillic and full-width letters share their shapes with Latin ones; a combining
        // accent makes another text than the letter that has it.
        const bool isLookAlike = (c >= 0x370 && c < 0x530) || (c > 0xFF00 && c < 0xFF5F);
        const bool misleads = isUnseen || (isLatin && isLookAlike) || (c >= 0x300 && c < 0x370);
        if (c >= 0x80 && (look.beyondAscii.empty() || (misleads && !look.misleads))) {
            char name[sizeof("U+FFFFFFFF")];
            std::snprintf(name, sizeof(name), "U+%04X", static_cast<unsigned>(c));
            look.beyondAscii = name;
            look.misleads = misleads;
        }
        if (!isUnseen) {
            look.folded += static_cast<wchar_t>(std::towlower(character));
        }
    }
    return look;
}

} // namespace dolqctl
