#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <saNtf.h>

namespace platform::ntf {

/// The values of one notification that lie outside its arrays: each a block of its own, which stays
/// in place. A value knows its block by an offset, as if the blocks lay end to end.
class ValueBlocks {
public:
    /// `limit`: of the bytes of all blocks together.
    explicit ValueBlocks(std::size_t limit) : m_limit(limit) {}

    /// Makes `value` point to a new zeroed block, which is returned; null beyond the limit.
    void* allocate(SaUint16T size, SaNtfValueT& value);

    /// No further one is allocated.
    void close() { m_limit = m_used; }

    /// The block of which `value` names all or the first bytes; null when there is none.
    void* find(const SaNtfValueT& value) const;

private:
    struct Block {
        std::size_t offset;
        std::size_t size;
        std::unique_ptr<std::byte[]> bytes;
    };

    std::size_t m_limit;
    std::size_t m_used = 0;
    std::vector<Block> m_blocks; ///< by offset
};

} // namespace platform::ntf
