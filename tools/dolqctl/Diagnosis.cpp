#include "Diagnosis.h"

#include <algorithm>
#include <utility>

#include <dlfcn.h>

namespace dolqctl {

std::size_t Diagnosis::failures() const {
    return static_cast<std::size_t>(std::count_if(
        m_observations.begin(), m_observations.end(), [](const Observation& observation) {
            return observation.status == Observation::Status::Failed;
        }));
}

void Diagnosis::add(std::string& check, Observation::Status status, std::string& text,
                    std::string advice) {
    m_observations.push_back({std::move(check), status, std::move(text), std::move(advice), {}});
}

std::string fileOfAddress(const void* address) {
    Dl_info info{};
    return dladdr(address, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname
                                                                    : "an unknown file";
}

} // namespace dolqctl
