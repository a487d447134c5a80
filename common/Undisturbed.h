#pragma once

#include <csignal>
#include <ctime>

#include <pthread.h>

#include "common/CancellationHeld.h"

namespace common {

/// While it lives, the thread is not cancelled, and what it writes raises no signal.
class Undisturbed {
public:
    Undisturbed() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGPIPE);
        sigaddset(&m_signals, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_mask);
        sigset_t pending;
        sigpending(&pending);
        for (const int signal : {SIGPIPE, SIGXFSZ}) {
            if (sigismember(&pending, signal) != 0) { // the application's
                sigdelset(&m_signals, signal);
            }
        }
    }
    ~Undisturbed() {
        const timespec now{};
        while (sigtimedwait(&m_signals, nullptr, &now) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    }
    Undisturbed(const Undisturbed&) = delete;
    Undisturbed& operator=(const Undisturbed&) = delete;

private:
    const CancellationHeld m_held;
    sigset_t m_signals;
    sigset_t m_mask;
};

} // namespace common
