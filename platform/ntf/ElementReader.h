#pragma once

#include <cstdint>
#include <cstring>

#include <saNtf.h>

#include "platform/ntf/ValueBlocks.h"
#include "platform/ntf/log/AlarmRecord.h"

namespace platform::ntf {

/// What a sender wrote into an enumeration. It may be any number, which the enumeration's own type
/// could not hold.
template <typename Enumeration> std::uint32_t codeOf(const Enumeration& written) {
    std::uint32_t code = 0;
    static_assert(sizeof written == sizeof code);
    std::memcpy(&code, &written, sizeof code);
    return code;
}

/// The entry with its value, if `blocks` has one for it.
Element toElement(const SaNtfAdditionalInfoT& info, const ValueBlocks& blocks);
Element toElement(const SaNtfProposedRepairActionT& action, const ValueBlocks& blocks);

} // namespace platform::ntf
