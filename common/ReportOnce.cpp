#include "common/ReportOnce.h"

#include <array>
#include <atomic>
#include <functional>

#include <unistd.h>

#include "common/Undisturbed.h"

namespace common {

namespace {

/// Of the lines that were written, 0 from the first free place on. Atomic numbers need neither a
/// lock, which a forked process could find taken, nor destruction while threads still call.
std::array<std::atomic<std::size_t>, 32> reported{};

bool isNew(std::size_t hash) {
    for (std::atomic<std::size_t>& place : reported) {
        std::size_t known = 0;
        if (place.compare_exchange_strong(known, hash)) {
            return true;
        }
        if (known == hash) {
            return false;
        }
    }
    return false;
}

} // namespace

void reportOnce(const std::string& line) {
    if (isNew(std::hash<std::string>()(line))) {
        const Undisturbed undisturbed;
        static_cast<void>(::write(STDERR_FILENO, line.data(), line.size()) == 0);
    }
}

} // namespace common
