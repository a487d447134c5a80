#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>

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
        m_observations.push_back(
            {std::move(check), Observation::Status::Ok, std::move(finding), {}});
    }
    void warn(std::string check, std::string finding, std::string advice) {
        m_observations.push_back({std::move(check), Observation::Status::Warning,
                                  std::move(finding), std::move(advice)});
    }
    void fail(std::string check, std::string finding, std::string advice) {
        m_observations.push_back(
            {std::move(check), Observation::Status::Failed, std::move(finding), std::move(advice)});
    }

    void sortWorstFirst() {
        std::stable_sort(m_observations.begin(), m_observations.end(),
                         [](const Observation& one, const Observation& other) {
                             return one.status > other.status;
                         });
    }

    const std::vector<Observation>& observations() const { return m_observations; }
    std::ptrdiff_t failures() const {
        return std::count_if(m_observations.begin(), m_observations.end(),
                             [](const Observation& observation) {
                                 return observation.status == Observation::Status::Failed;
                             });
    }

private:
    std::vector<Observation> m_observations;
};

// The checks; `doctor` runs them one after the other.
void checkTraces(Diagnosis& diagnosis); // EnvironmentChecks.cpp
void checkEnvironment(Diagnosis& diagnosis);
void checkNotificationLog(Diagnosis& diagnosis); // of the embedded service
void checkMappings(Diagnosis& diagnosis);        // MappingChecks.cpp
void checkLibrary(Diagnosis& diagnosis);         // PlatformChecks.cpp
void checkCorrelationService(Diagnosis& diagnosis);
void checkNtfService(Diagnosis& diagnosis);

/// The file from which the dynamic linker took a function.
template <typename Function> std::string fileOf(Function* function) {
    Dl_info info{};
    return dladdr(reinterpret_cast<const void*>(function), &info) != 0 && info.dli_fname != nullptr
               ? info.dli_fname
               : "an unknown file";
}

} // namespace dolqctl
