#include "platform/ntf/ReportOnce.h"

#include <algorithm>
#include <array>
#include <functional>
#include <mutex>

#include <unistd.h>

#include "common/Undisturbed.h"
#include "platform/ntf/ServiceMutex.h"

namespace platform::ntf {

namespace {

/// Of the lines that were written, 0 from the first free place on. An array needs no destruction:
/// threads may still call while the process ends.
std::array<std::size_t, 32> reported{};

bool isNew(std::size_t hash) {
    const std::lock_guard<std::mutex> lock(serviceMutex);
    const auto place = std::find_if(reported.begin(), reported.end(), [hash](std::size_t other) {
        return other == hash || other == 0;
    });
    if (place == reported.end() || *place == hash) {
        return false;
    }
    *place = hash;
    return true;
}

} // namespace

void reportOnce(const std::string& line) {
    if (isNew(std::hash<std::string>()(line))) {
        const common::Undisturbed undisturbed;
        static_cast<void>(::write(STDERR_FILENO, line.data(), line.size()) == 0);
    }
}

} // namespace platform::ntf
