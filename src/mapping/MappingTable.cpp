#include "mapping/MappingTable.h"

#include <algorithm>
#include <iterator>

namespace dolq {

namespace {

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
    if (m_blocks.empty()) {
        m_blocks.push_back({Entry{faultId, minorType, moClass}});
        return;
    }
    // The first block whose last entry is not before the key, or else the last block.
    const auto found =
        std::partition_point(m_blocks.begin(), std::prev(m_blocks.end()),
                             [&](const Block& block) { return isBefore(block.back(), key); });
    const auto place = std::lower_bound(found->begin(), found->end(), key, isBefore);
    if (place != found->end() && place->faultId == faultId && place->moClass == moClass) {
        place->minorType = minorType;
        return;
    }
    if (found->size() < kBlockSize) {
        found->insert(place, Entry{faultId, minorType, moClass});
        return;
    }
    splitBlock(static_cast<std::size_t>(found - m_blocks.begin()));
    set(faultId, minorType, moClass);
}

/// Moves the upper part of a full block into a new one after it. The last block gives up only its
/// last entry: mappings mostly arrive in key order, and then all blocks but the last stay full.
void MappingTable::splitBlock(std::size_t index) {
    Block upper;
    upper.reserve(kBlockSize);
    const auto next = m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                                      std::move(upper));
    Block& full = *std::prev(next);
    const std::size_t kept = next + 1 == m_blocks.end() ? full.size() - 1 : full.size() / 2;
    const auto cut = full.begin() + static_cast<std::ptrdiff_t>(kept);
    next->assign(std::make_move_iterator(cut), std::make_move_iterator(full.end()));
    full.erase(cut, full.end());
}

} // namespace dolq
