#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <saAis.h>

#include "Commands.h"

namespace dolqctl {

/// The notification service is asked nothing more: the time was up, or the user gave up.
class GivenUp : public CommandError {
public:
    GivenUp(const std::string& text, int by) : CommandError(text), signal(by) {}
    const int signal; ///< the user's; 0: the time was up
};

/// What a command has of patience with the notification service, which may be busy, or block.
class Waiting {
public:
    /// Ends waiting, not the program, at SIGINT and SIGTERM from now on.
    static void heedSignals();

    /// The answer of `call`, a call of the service that is named `name`, which is repeated while
    /// that is "try again". It runs on a thread of its own, which is left behind when it is given
    /// up: `call` owns what it uses. Tells on standard error, once, what takes more than a second.
    /// Throws GivenUp when calls that did not succeed have taken 30 s in all.
    SaAisErrorT call(const std::string& name, const std::function<SaAisErrorT()>& call);

private:
    /// `name` has been waited for so long since the call began, and what it answers.
    void bear(std::chrono::nanoseconds time, const std::string& name, const std::string& answer);

    std::chrono::nanoseconds m_waited{};
    bool m_hasTold = false;
};

} // namespace dolqctl
