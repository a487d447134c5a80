// Setting a mapping finds its place by bisection, first the block and then the entry in it. A block
// that is full is split in two, so that no insertion moves the entries of more than one block.

#include "mapping/MappingTable.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace dolq {

namespace {

// Few enough that moving half of them for an insertion is cheap, and enough that a walk through the
// table seldom changes blocks.
constexpr std::size_t kBlockSize = 512; // entries

struct Key {
    std::uint32_t faultId;
    const std::string& moClass;
};

bool isBefore(const MappingTable::Entry& entry, const Key& key) {
    return entry.faultId != key.faultId ? entry.faultId < key.faultId : entry.moClass < key.moClass;
}

} // namespace

void MappingTable::set(std::uint32_t faultId, std::uint32_t minorType, const std::string& moClass) {
    const Key key{faultId, moClass};
    // The first block that does not end before the key, or the last one.
    auto block = std::partition_point(m_blocks.begin(), m_blocks.end(), [&](const Block& each) {
        return isBefore(each.back(), key);
    });
    if (block == m_blocks.end()) {
        // Mapping files are mostly sorted: a new block after a full one leaves full blocks behind,
        // where splitting would leave halves.
        if (m_blocks.empty() || m_blocks.back().size() == kBlockSize) {
            m_blocks.emplace_back(1, Entry{faultId, minorType, moClass});
            return;
        }
        --block;
    }
    const auto place = std::lower_bound(block->begin(), block->end(), key, isBefore);
    if (place != block->end() && place->faultId == faultId && place->moClass == moClass) {
        place->minorType = minorType;
    } else if (block->size() < kBlockSize) {
        block->insert(place, Entry{faultId, minorType, moClass});
    } else {
        splitBlock(block);
        set(faultId, minorType, moClass);
    }
}

/// Moves the upper half of a full block into a new one after it.
void MappingTable::splitBlock(std::vector<Block>::iterator full) {
    const auto upper = m_blocks.emplace(full + 1, kBlockSize / 2);
    const auto cut = std::prev(upper)->begin() + kBlockSize / 2;
    std::move(cut, std::prev(upper)->end(), upper->begin());
    std::prev(upper)->resize(kBlockSize / 2);
}

} // namespace dolq
