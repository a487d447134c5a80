#include "platform/ntf/ElementReader.h"

#include <cstddef>
#include <string>

namespace platform::ntf {

namespace {

/// The bytes of a value without the one NUL that ends a C string.
std::string toText(std::string bytes) {
    if (!bytes.empty() && bytes.back() == '\0') {
        bytes.pop_back();
    }
    return bytes;
}

/// The bytes of a value that holds the start of an SaNameT.
std::string toName(const std::string& bytes) {
    SaUint16T length = 0;
    constexpr std::size_t kNameAt = offsetof(SaNameT, value);
    if (bytes.size() < kNameAt) {
        return {};
    }
    std::memcpy(&length, bytes.data(), sizeof length);
    const std::string name = bytes.substr(kNameAt, length);
    return name.substr(0, name.find('\0'));
}

decltype(Element::value) readValue(std::uint32_t type, const SaNtfValueT& value,
                                   const ValueBlocks& blocks) {
    switch (type) {
    case SA_NTF_VALUE_UINT8:
        return std::uint64_t{value.uint8Val};
    case SA_NTF_VALUE_INT8:
        return std::int64_t{value.int8Val};
    case SA_NTF_VALUE_UINT16:
        return std::uint64_t{value.uint16Val};
    case SA_NTF_VALUE_INT16:
        return std::int64_t{value.int16Val};
    case SA_NTF_VALUE_UINT32:
        return std::uint64_t{value.uint32Val};
    case SA_NTF_VALUE_INT32:
        return std::int64_t{value.int32Val};
    case SA_NTF_VALUE_FLOAT:
        return double{value.floatVal};
    case SA_NTF_VALUE_UINT64:
        return std::uint64_t{value.uint64Val};
    case SA_NTF_VALUE_INT64:
        return std::int64_t{value.int64Val};
    case SA_NTF_VALUE_DOUBLE:
        return value.doubleVal;
    default:
        break;
    }
    // Arrays have no call here that could allocate one.
    const auto* block = static_cast<const char*>(blocks.find(value));
    if (block == nullptr || type == SA_NTF_VALUE_ARRAY) {
        return std::monostate{};
    }
    const std::string bytes(block, value.ptrVal.dataSize);
    if (type == SA_NTF_VALUE_STRING) {
        return toText(bytes);
    }
    return type == SA_NTF_VALUE_LDAP_NAME ? toName(bytes) : bytes;
}

} // namespace

Element toElement(const SaNtfAdditionalInfoT& info, const ValueBlocks& blocks) {
    const std::uint32_t type = codeOf(info.infoType);
    return {info.infoId, type, readValue(type, info.infoValue, blocks)};
}

Element toElement(const SaNtfProposedRepairActionT& action, const ValueBlocks& blocks) {
    const std::uint32_t type = codeOf(action.actionValueType);
    return {action.actionId, type, readValue(type, action.actionValue, blocks)};
}

} // namespace platform::ntf
