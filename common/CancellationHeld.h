#pragma once

#include <pthread.h>

namespace common {

/// While an object of this class lives, a cancellation of its thread (pthread_cancel) stays
/// pending. It protects what a thread must not leave half done: a call of a foreign library, a
/// destructor.
class CancellationHeld {
public:
    CancellationHeld() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }
    ~CancellationHeld() { pthread_setcancelstate(m_before, nullptr); }
    CancellationHeld(const CancellationHeld&) = delete;
    CancellationHeld& operator=(const CancellationHeld&) = delete;

private:
    int m_before = PTHREAD_CANCEL_ENABLE;
};

} // namespace common
