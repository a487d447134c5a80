#include "platform/ntf/ValueBlocks.h"

#include <algorithm>

namespace platform::ntf {

void* ValueBlocks::allocate(SaUint16T size, SaNtfValueT& value) {
    if (size > m_limit - m_used) {
        return nullptr;
    }
    m_blocks.push_back({m_used, size, std::make_unique<std::byte[]>(size)});
    value.ptrVal.dataOffset = static_cast<SaUint16T>(m_used);
    value.ptrVal.dataSize = size;
    m_used += size;
    return m_blocks.back().bytes.get();
}

void* ValueBlocks::find(const SaNtfValueT& value) const {
    const std::size_t offset = value.ptrVal.dataOffset;
    const auto block = std::lower_bound(
        m_blocks.begin(), m_blocks.end(), offset,
        [](const Block& candidate, std::size_t wanted) { return candidate.offset < wanted; });
    const bool found = block != m_blocks.end() && block->offset == offset &&
                       value.ptrVal.dataSize != 0 && value.ptrVal.dataSize <= block->size;
    return found ? block->bytes.get() : nullptr;
}

} // namespace platform::ntf
