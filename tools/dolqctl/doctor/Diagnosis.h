#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace dolqctl {

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
};

class Diagnosis {
public:
    void ok(std::string check, std::string finding) {
        add({std::move(check), Observation::Status::Ok, std::move(finding), {}});
    }
    void warn(std::string check, std::string finding, std::string advice) {
        add({std::move(check), Observation::Status::Warning, std::move(finding),
             std::move(advice)});
    }
    void fail(std::string check, std::string finding, std::string advice) {
        add({std::move(check), Observation::Status::Failed, std::move(finding), std::move(advice)});
        ++m_failures;
    }

    /// The worst first.
    const std::vector<Observation>& observations() const { return m_observations; }
    std::size_t failures() const { return m_failures; }

private:
    void add(Observation observation) {
        const auto place = std::upper_bound(
            m_observations.begin(), m_observations.end(), observation,
            [](const auto& one, const auto& other) { return one.status > other.status; });
        m_observations.insert(place, std::move(observation));
    }

    std::vector<Observation> m_observations;
    std::size_t m_failures = 0;
};

// The checks; `doctor` runs them one after the other.
void checkTraces(Diagnosis& diagnosis); // EnvironmentChecks.cpp
void checkEnvironment(Diagnosis& diagnosis);
void checkNotificationLog(Diagnosis& diagnosis); // of the embedded service
void checkMappings(Diagnosis& diagnosis);        // MappingChecks.cpp
void checkLibrary(Diagnosis& diagnosis);         // PlatformChecks.cpp
void checkCorrelationService(Diagnosis& diagnosis);
void checkNtfService(Diagnosis& diagnosis);

} // namespace dolqctl
