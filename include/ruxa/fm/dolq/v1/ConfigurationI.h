#pragma once

#include <cstdint>
#include <string>

namespace ruxa::fm::dolq::v1 {

/// Changes the fault-to-alarm table of one thread's v1 factory. A change takes effect with the next
/// alarm; the last mapping set for a fault id and class wins. Use it only on the thread that owns
/// the factory. Nothing fails but for memory exhaustion, which is thrown.
class ConfigurationI {
public:
    virtual ~ConfigurationI() = default;

    /// Deprecated: maps a fault id whose notification object has no class. Each call leaves a
    /// failure trace that says so.
    virtual void setMapping(std::uint32_t faultId, std::uint32_t minorType) = 0;

    /// Maps fault `faultId` on objects of class `moClass` to an alarm. `minorType`: the alarm's
    /// major id in the upper 16 bits, its minor id in the lower 16. `moClass` is taken exactly as
    /// given.
    virtual void setMapping(std::uint32_t faultId, std::uint32_t minorType,
                            const std::string& moClass) = 0;

    /// Applies a configuration. The file itself is not opened: any name that is not empty sets the
    /// two built-in mappings of fault 1025 to 9175040 (no class, and "Object2"); an empty one
    /// changes nothing.
    virtual void configurationFile(const std::string& fileName) = 0;
};

} // namespace ruxa::fm::dolq::v1
