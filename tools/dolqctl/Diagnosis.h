#pragma once

#include <optional>
#include <string>
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
    std::string text;
    std::string advice; ///< what to do; empty for `Ok`
    std::optional<double> milliseconds;
};

class Diagnosis {
public:
    void ok(std::string check, std::string text) { add(check, Observation::Status::Ok, text, ""); }
    void warn(std::string check, std::string text, const std::string& advice) {
        add(check, Observation::Status::Warning, text, advice);
    }
    void fail(std::string check, std::string text, const std::string& advice) {
        add(check, Observation::Status::Failed, text, advice);
    }
    /// How long the latest one took.
    void took(double milliseconds) { m_observations.back().milliseconds = milliseconds; }

    const std::vector<Observation>& observations() const { return m_observations; }
    std::size_t failures() const;

private:
    void add(std::string& check, Observation::Status status, std::string& text, std::string advice);

    std::vector<Observation> m_observations;
};

// The checks. Those of the trace backend come first: the backend reads its environment once, and
// later ones keep it quiet.
void diagnoseTraces(Diagnosis& diagnosis);
void diagnoseEnvironment(Diagnosis& diagnosis);
void diagnoseMappings(Diagnosis& diagnosis);
void diagnoseCorrelation(Diagnosis& diagnosis);
void diagnoseLog(Diagnosis& diagnosis);
void diagnoseNtf(Diagnosis& diagnosis);

/// The file from which the dynamic linker took a function.
std::string fileOfAddress(const void* address);
template <typename Function> std::string fileOf(Function* function) {
    return fileOfAddress(reinterpret_cast<const void*>(function));
}

} // namespace dolqctl
