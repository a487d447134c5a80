#pragma once

#include <cstdint>
#include <string>

namespace ruxa::fm::dolq::v1 {

/// Changes the fault-to-alarm table of one thread's v1 factory. A change takes effect with the next
/// alarm; the last mapping set for a fault id and class wins, and none can be removed. Takes no
/// lock: use it only on the thread that owns the factory, while no other thread raises or ceases
/// alarms through the factory's adapters. Nothing fails but for memory exhaustion, which is thrown.
class ConfigurationI {
public:
    /// The factory destroys it; a client never does.
    virtual ~ConfigurationI() = default;

    /// Maps fault `faultId` to alarm `minorType` on objects that have no class.
    /// @deprecated Use the operation below. Each call leaves a failure trace that says so.
    virtual void setMapping(std::uint32_t faultId, std::uint32_t minorType) = 0;

    /// Maps fault `faultId` on objects of class `moClass` to an alarm; any numbers will do.
    /// `minorType`: the alarm's major id in the upper 16 bits, its minor id in the lower 16.
    /// `moClass` is copied exactly as given: one class, whose blanks and commas count. The empty
    /// one stands for objects that have no class.
    virtual void setMapping(std::uint32_t faultId, std::uint32_t minorType,
                            const std::string& moClass) = 0;

    /// Applies a configuration. The file `fileName` itself is not opened, so it need not exist: any
    /// name that is not empty sets the two built-in mappings of fault 1025 to 9175040 (no class,
    /// and "Object2"); an empty one changes nothing. Alarm mapping files are read by
    /// `getFmiFactory` alone.
    virtual void configurationFile(const std::string& fileName) = 0;
};

} // namespace ruxa::fm::dolq::v1
