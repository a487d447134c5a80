#pragma once

#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "common/CancellationHeld.h"

namespace common {

/// A file descriptor, or none, which is closed with this object. It is never 0, 1 or 2: an
/// application that closed these would print into the file.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {
        if (number >= 0 && number <= STDERR_FILENO) {
            m_number = ::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            ::close(number);
        }
    }
    ~Descriptor() {
        if (m_number >= 0) {
            const CancellationHeld held;
            ::close(m_number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    /// Negative if there is none.
    int number() const { return m_number; }
    /// Gives the descriptor to the caller, who closes it.
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

} // namespace common
