#include "Diagnosis.h"

#include <algorithm>
#include <utility>

#include <dlfcn.h>

namespace dolqctl {

std::size_t Diagnosis::failures() const {
    return static_cast<std::size_t>(
        std::count_if(m_findings.begin(), m_findings.end(), [](const Finding& finding) {
            return finding.status == Finding::Status::Failed;
        }));
}

void Diagnosis::add(std::string& check, Finding::Status status, std::string& text,
                    std::string advice) {
    m_findings.push_back({std::move(check), status, std::move(text), std::move(advice), {}});
}

std::string fileOfAddress(const void* address) {
    Dl_info info{};
    return dladdr(address, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname
                                                                    : "an unknown file";
}

} // namespace dolqctl
