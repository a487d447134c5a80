#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Commands.h"

namespace dolqctl {

/// One thing that was looked at. All texts are raw.
struct Observation {
    enum class Status {
        Ok,
        Note,    ///< what cannot be known here, or what the user has to compare
        Warning, ///< alarms go out, but not as somebody meant them to
        Failed   ///< what an alarm needs is not there
    };
    std::string check; ///< what was looked at: the same words every time
    Status status;
    std::string finding;
    std::string meaning; ///< what becomes of alarms: of warnings and failures
    std::string advice;  ///< what to do, if anything
};

class Diagnosis {
public:
    using Text = const std::string&;
    void ok(Text check, Text finding) { add({check, Observation::Status::Ok, finding, {}, {}}); }
    void note(Text check, Text finding, Text advice = {}) {
        add({check, Observation::Status::Note, finding, {}, advice});
    }
    void warn(Text check, Text finding, Text meaning, Text advice) {
        add({check, Observation::Status::Warning, finding, meaning, advice});
    }
    void fail(Text check, Text finding, Text meaning, Text advice) {
        add({check, Observation::Status::Failed, finding, meaning, advice});
        ++m_failures;
    }

    /// The worst last; of one status the latest last.
    const std::vector<Observation>& observations() const { return m_observations; }
    std::size_t failures() const { return m_failures; }

    /// Prints whose variables were looked at, what is in order, in one line or with `all` in one
    /// each, what is not, and at the end `verdict`.
    void print(const Arguments& arguments, const std::string& verdict) const;

private:
    void add(Observation observation);

    std::vector<Observation> m_observations;
    std::size_t m_failures = 0;
};

} // namespace dolqctl
