#pragma once

#include <cstdint>
#include <string>

namespace ruxa::fm::dolq::v1 {

/// Changes the fault-to-alarm table of one thread's v1 factory. A change takes effect with the next
/// alarm. The last mapping that is set for a fault id and a class counts, and none can be removed.
///
/// Takes no lock: use it on the thread that owns the factory alone, while no other thread raises or
/// ceases alarms through the factory's adapters. No call fails, except that it throws when memory
/// is exhausted or the trace backend throws.
class ConfigurationI {
public:
    /// The factory destroys it. A client never does.
    virtual ~ConfigurationI() = default;

    /// Maps fault `faultId` to alarm `minorType` on objects that have no class.
    /// @deprecated Use the operation below. Each call leaves a failure trace that says the same.
    virtual void setMapping(std::uint32_t faultId, std::uint32_t minorType) = 0;

    /// Maps fault `faultId` on objects of class `moClass` to an alarm. Both numbers may have any
    /// value. `minorType` holds the alarm's major id in its upper 16 bits and the minor id in its
    /// lower 16. `moClass` is one class and is copied exactly as given: blanks and commas are part
    /// of it. The empty class stands for objects that have no class.
    virtual void setMapping(std::uint32_t faultId, std::uint32_t minorType,
                            const std::string& moClass) = 0;

    /// Sets two built-in mappings; it reads no file. For any `fileName` that is not empty, whether
    /// or not such a file exists, fault 1025 is mapped to 9175040 on objects without a class and on
    /// those of class "Object2". An empty `fileName` changes nothing. `getFmiFactory` alone reads
    /// alarm mapping files.
    virtual void configurationFile(const std::string& fileName) = 0;
};

} // namespace ruxa::fm::dolq::v1
