#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include <saNtf.h>

/// Fields of the interface's structures, into which a client may have written any bytes.
namespace platform::ntf {

/// Of an enumeration, whose own type could not hold every number.
template <typename Enumeration> std::uint32_t codeOf(const Enumeration& written) {
    std::uint32_t code = 0;
    static_assert(sizeof written == sizeof code);
    std::memcpy(&code, &written, sizeof code);
    return code;
}

template <typename Enumeration> void setCode(Enumeration& field, std::uint32_t code) {
    static_assert(sizeof field == sizeof code);
    std::memcpy(&field, &code, sizeof code);
}

inline bool isValid(const SaNameT& name) { return name.length < SA_MAX_NAME_LENGTH; }

/// Of a valid name.
inline std::string toText(const SaNameT& name) {
    const char* const text = reinterpret_cast<const char*>(name.value);
    return {text, ::strnlen(text, name.length)};
}

/// Cuts what does not fit.
inline void setName(SaNameT& name, const std::string& text) {
    name.length =
        static_cast<SaUint16T>(std::min<std::size_t>(text.size(), SA_MAX_NAME_LENGTH - 1));
    std::memcpy(name.value, text.data(), name.length);
}

} // namespace platform::ntf
