#pragma once

#include <cstdint>
#include <string>

namespace dolq {

/// Which alarm a fault is: the adapter's view of a factory's mapping table.
class MappingI {
public:
    virtual ~MappingI() = default;

    /// True, with `minorType` written, when fault `faultId` on an object of class `moClass` is
    /// mapped to an alarm; false, with `minorType` untouched, otherwise.
    virtual bool getMinorType(std::uint32_t faultId, std::uint32_t& minorType,
                              const std::string& moClass) = 0;
};

} // namespace dolq
