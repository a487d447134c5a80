#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace dolqctl {

struct Discovery;
struct Inventory;

/// One thing that was looked at.
struct Observation {
    enum class Status {
        Ok,
        Warning, ///< alarms go out, but not as somebody meant them to
        Failed   ///< what an alarm needs is not there
    };
    std::string check; ///< what was looked at: the same words every time
    Status status;
    std::string finding;
    std::string advice; ///< what to do; empty for `Ok`

    /// What was looked at and found.
    std::string text() const;
};

class Diagnosis {
public:
    using Text = const std::string&;
    void ok(Text check, Text finding) { add({check, Observation::Status::Ok, finding, {}}); }
    void warn(Text check, Text finding, Text advice) {
        add({check, Observation::Status::Warning, finding, advice});
    }
    void fail(Text check, Text finding, Text advice) {
        add({check, Observation::Status::Failed, finding, advice});
        ++m_failures;
    }

    /// The worst first, and in the order of the checks.
    const std::vector<Observation>& observations() const { return m_observations; }
    Observation::Status worst() const { return m_observations.front().status; }
    std::size_t failures() const { return m_failures; }

    /// All observations, `conclusion`, and what no check tries.
    void print(const std::string& conclusion) const;

private:
    void add(Observation observation);

    std::vector<Observation> m_observations;
    std::size_t m_failures = 0;
};

void to_json(nlohmann::ordered_json& json, const Diagnosis& diagnosis);

// The checks; `doctor` runs them one after the other.
void checkTraces(Diagnosis& diagnosis); // EnvironmentChecks.cpp
void checkIdentity(Diagnosis& diagnosis);
void checkReporter(Diagnosis& diagnosis);
void checkNotificationLog(Diagnosis& diagnosis); // of the embedded service
void checkLibrary(Diagnosis& diagnosis);         // PlatformChecks.cpp
void checkCorrelationService(Diagnosis& diagnosis);
void checkNtfService(Diagnosis& diagnosis);
/// Whether the load module is there, and its mapping files are read (MappingChecks.cpp).
void checkLoadModule(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory);
void checkMappings(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory);

} // namespace dolqctl
