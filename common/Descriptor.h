#pragma once

#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "common/CancellationHeld.h"

namespace common {

/// A file descriptor, or none, that is closed at the end. It leaves 0, 1 and 2 to the application,
/// which may have closed them, but prints to them all the same.
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

    /// Negative: none.
    int number() const { return m_number; }
    /// Not closed here any more.
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

} // namespace common
