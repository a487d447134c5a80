#include "HeaderWriter.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>

#include "MappingText.h"
#include "Output.h"

namespace dolqctl {

namespace {

/// In order, for a binary search.
constexpr const char* kKeywords[] = {"alignas",       "alignof",     "and",
                                     "and_eq",        "asm",         "auto",
                                     "bitand",        "bitor",       "bool",
                                     "break",         "case",        "catch",
                                     "char",          "char16_t",    "char32_t",
                                     "char8_t",       "class",       "co_await",
                                     "co_return",     "co_yield",    "compl",
                                     "concept",       "const",       "const_cast",
                                     "consteval",     "constexpr",   "constinit",
                                     "continue",      "decltype",    "default",
                                     "delete",        "do",          "double",
                                     "dynamic_cast",  "else",        "enum",
                                     "explicit",      "export",      "extern",
                                     "false",         "float",       "for",
                                     "friend",        "goto",        "if",
                                     "inline",        "int",         "long",
                                     "mutable",       "namespace",   "new",
                                     "noexcept",      "not",         "not_eq",
                                     "nullptr",       "operator",    "or",
                                     "or_eq",         "private",     "protected",
                                     "public",        "register",    "reinterpret_cast",
                                     "requires",      "return",      "short",
                                     "signed",        "sizeof",      "static",
                                     "static_assert", "static_cast", "struct",
                                     "switch",        "template",    "this",
                                     "thread_local",  "throw",       "true",
                                     "try",           "typedef",     "typeid",
                                     "typename",      "union",       "unsigned",
                                     "using",         "virtual",     "void",
                                     "volatile",      "wchar_t",     "while",
                                     "xor",           "xor_eq"};

bool isAscii(unsigned char c) { return c < 0x80; }

bool isNamePart(char c) {
    const auto code = static_cast<unsigned char>(c);
    return isAscii(code) && (std::isalnum(code) != 0 || c == '_');
}

bool isIdentifier(const std::string& name) {
    const bool wellFormed = !name.empty() &&
                            std::isdigit(static_cast<unsigned char>(name[0])) == 0 &&
                            std::all_of(name.begin(), name.end(), isNamePart);
    return wellFormed && name.front() != '_' && name.find("__") == name.npos &&
           !std::binary_search(
               std::begin(kKeywords), std::end(kKeywords), name.c_str(),
               [](const char* one, const char* other) { return std::strcmp(one, other) < 0; });
}

/// Two underscores side by side are reserved, so one stands for any number of them.
std::string nameOf(const Mapping& mapping) {
    const std::string words = 'k' + (mapping.moClass.empty() ? "NoClass" : mapping.moClass) + '_' +
                              std::to_string(mapping.faultId);
    std::string name;
    for (const char c : words) {
        const char part = isNamePart(c) ? c : '_';
        if (part != '_' || name.back() != '_') { // it begins with a letter
            name += part;
        }
    }
    return name;
}

/// As a C++ string literal; octal, because a hexadecimal escape has no end of its own.
std::string literal(const std::string& text) {
    std::string all = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            all += '\\';
            all += c;
        } else if (isAscii(code) && std::isprint(code) != 0) {
            all += c;
        } else {
            all += '\\';
            for (const int shift : {6, 3, 0}) {
                all += static_cast<char>('0' + ((code >> shift) & 7));
            }
        }
    }
    return all + '"';
}

std::string fileName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string described(const Mapping& mapping) {
    return "fault " + std::to_string(mapping.faultId) +
           (mapping.moClass.empty() ? " without a class" : " on " + inQuotes(mapping.moClass)) +
           " (" + text(mapping.place) + ')';
}

constexpr char kAlarm[] = R"(/// A fault on objects of one class, and the alarm that it becomes.
struct Alarm {
    std::uint32_t faultId;
    const char* managedObjectClass; ///< empty: objects without a class
    std::uint32_t minorType;

    constexpr std::uint16_t majorId() const { return static_cast<std::uint16_t>(minorType >> 16); }
    constexpr std::uint16_t minorId() const { return static_cast<std::uint16_t>(minorType); }
};
)";

} // namespace

std::vector<Constant> namedConstants(const Inventory& inventory) {
    std::vector<Constant> constants;
    std::map<std::string, const Mapping*> names;
    for (const EffectiveMapping& effective : inventory.effective) {
        const Mapping& mapping = effective.mapping;
        constants.push_back({nameOf(mapping), &mapping});
        const auto [other, isNew] = names.try_emplace(constants.back().name, &mapping);
        if (!isNew) {
            throw NameCollision("two mappings get the name " + other->first + ": " +
                                described(*other->second) + " and " + described(mapping) +
                                "; rename one of the classes");
        }
    }
    return constants;
}

bool isNamespace(const std::string& name) {
    std::size_t begin = 0;
    for (std::size_t end = name.find("::"); end != name.npos; end = name.find("::", begin)) {
        if (!isIdentifier(name.substr(begin, end - begin))) {
            return false;
        }
        begin = end + 2;
    }
    return isIdentifier(name.substr(begin));
}

void writeHeader(const std::vector<Constant>& constants, const std::string& nameSpace,
                 std::ostream& out) {
    out << "// Generated from alarm mapping files by dolqctl generate: change those, not this.\n"
           "#pragma once\n\n"
           "#include <cstdint>\n\n"
           "namespace "
        << nameSpace << " {\n\n"
        << kAlarm;
    for (const Constant& constant : constants) {
        const Mapping& mapping = *constant.mapping;
        out << "\n/// Alarm " << alarmText(mapping.minorType) << ", "
            << printable(fileName(mapping.place.file)) << ':' << mapping.place.line << ".\n"
            << "inline constexpr Alarm " << constant.name << "{" << mapping.faultId << "u, "
            << literal(mapping.moClass) << ", " << mapping.minorType << "u};\n";
    }
    out << "\n} // namespace " << nameSpace << '\n';
}

} // namespace dolqctl
