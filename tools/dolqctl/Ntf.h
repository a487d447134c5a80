#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <utility>

#include <saNtf.h>

#include "Commands.h"
#include "SharedObject.h"

namespace dolqctl {

/// What the notification service refuses: "saNtfInitialize answers 2 (SA_AIS_ERR_LIBRARY): ..."
class NtfError : public CommandError {
public:
    NtfError(const std::string& call, SaAisErrorT answer);
};

/// The notification service is asked nothing more: the time was up, or the user gave up.
class GivenUp : public CommandError {
public:
    GivenUp(const std::string& text, int by) : CommandError(text), signal(by) {}
    const int signal; ///< the user's; 0: the time was up
};

/// Ends `await`, not the program, at SIGINT and SIGTERM from now on.
void heedSignals();

/// Throws GivenUp when the calls of `ask` that did not succeed have taken 30 s in all. Tells on
/// standard error, once, that they have taken more than a second.
void checkPatience();

/// The result of `work`, which asks the notification service. It runs on a thread of its own, which
/// is left behind when it is given up: `work` owns what it uses. Throws as `checkPatience`, and
/// what `work` throws.
template <typename Work> auto await(Work work) {
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    std::thread thread(std::move(task));
    try {
        while (result.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout) {
            checkPatience();
        }
    } catch (const GivenUp&) {
        thread.detach();
        throw;
    }
    thread.join(); // so that what `work` throws has one owner
    return result.get();
}

/// Inside `await`: the answer of `call`, which is repeated while that is "try again". `name` tells
/// people what is called, and lasts as long as the program.
SaAisErrorT ask(const char* name, const std::function<SaAisErrorT()>& call);

/// Inside `await`: a session with the notification service that programs here are given.
class Ntf {
public:
    /// Opens it. Throws NtfError, and CommandError when the service's library cannot be loaded.
    Ntf();
    /// Closes it; what was allocated in it ends.
    ~Ntf();
    Ntf(const Ntf&) = delete;
    Ntf& operator=(const Ntf&) = delete;

    SaNtfHandleT handle() const { return m_handle; }

    /// A function of the service. Throws CommandError when it has none of that name.
    template <typename Function> Function* function(const char* name) {
        return m_service.function<Function>(name);
    }

    /// Asks by `call` the function of that name, which it is given. Throws NtfError for other
    /// answers than SA_AIS_OK.
    template <typename Function, typename Call> void ask(const char* name, const Call& call) {
        auto* const given = function<Function>(name);
        const SaAisErrorT answer = dolqctl::ask(name, [&] { return call(given); });
        if (answer != SA_AIS_OK) {
            throw NtfError(name, answer);
        }
    }

private:
    SharedObject m_service{kNtfLibrary};
    decltype(saNtfFinalize)* const m_finalize = function<decltype(saNtfFinalize)>("saNtfFinalize");
    SaNtfHandleT m_handle = 0;
};

} // namespace dolqctl
