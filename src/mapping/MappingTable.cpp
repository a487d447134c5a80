#include "mapping/MappingTable.h"

#include <algorithm>
#include <iterator>
#include <utility>

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
    // Mappings mostly arrive in key order.
    if (m_blocks.empty() || isBefore(m_blocks.back().back(), key)) {
        append({faultId, minorType, moClass});
        return;
    }
    // The first block whose last entry is not before the key.
    const auto found =
        std::partition_point(m_blocks.begin(), m_blocks.end(),
                             [&](const Block& block) { return isBefore(block.back(), key); });
    const auto place = std::lower_bound(found->begin(), found->end(), key, isBefore);
    if (place->faultId == faultId && place->moClass == moClass) {
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

void MappingTable::append(Entry entry) {
    if (!m_blocks.empty() && m_blocks.back().size() < kBlockSize) {
        m_blocks.back().push_back(std::move(entry));
        return;
    }
    Block block;
    block.reserve(m_blocks.empty() ? 1 : kBlockSize); // most tables are small
    block.push_back(std::move(entry));
    m_blocks.push_back(std::move(block));
}

/// Moves the upper half of a full block into a new one after it.
void MappingTable::splitBlock(std::size_t index) {
    Block upper;
    upper.reserve(kBlockSize);
    const auto next = m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                                      std::move(upper));
    Block& full = *std::prev(next);
    const auto cut = full.begin() + kBlockSize / 2;
    next->assign(std::make_move_iterator(cut), std::make_move_iterator(full.end()));
    full.erase(cut, full.end());
}

} // namespace dolq
