#include "Ntf.h"

#include <csignal>
#include <mutex>
#include <optional>

#include "Output.h"
#include "common/AisNames.h"

namespace dolqctl {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kPause = 100ms;
constexpr auto kQuiet = 1s;
constexpr auto kLimit = 30s;

volatile std::sig_atomic_t givenUp = 0; // by this signal

/// The latest call of `ask`, for the thread that waits.
struct {
    std::mutex mutex;
    const char* name = "";
    SaAisErrorT answer = SA_AIS_OK; ///< the last one that was not the end; OK: there was none
    std::optional<Clock::time_point> start;
    Clock::duration waited{}; ///< for earlier calls that did not succeed
    bool isTold = false;
} latest;

} // namespace

NtfError::NtfError(const std::string& call, SaAisErrorT answer)
    : CommandError(call + " answers " + common::aisText(answer) +
                   (common::aisMeaning(answer).empty() ? "" : ": ") +
                   std::string(common::aisMeaning(answer))) {}

void heedSignals() {
    const auto giveUp = [](int signal) { givenUp = signal; };
    std::signal(SIGINT, giveUp);
    std::signal(SIGTERM, giveUp);
}

void checkPatience() {
    const std::lock_guard lock(latest.mutex);
    const std::string text =
        latest.name + (latest.answer == SA_AIS_OK ? " has not answered"
                                                  : " answers " + common::aisText(latest.answer));
    const auto waited = latest.waited + (latest.start ? Clock::now() - *latest.start : 0s);
    if (givenUp != 0) {
        throw GivenUp("given up: " + text, givenUp);
    }
    if (waited >= kLimit) {
        throw GivenUp("given up after " + std::to_string(kLimit.count()) + " s of waiting: " + text,
                      0);
    }
    if (waited >= kQuiet && !std::exchange(latest.isTold, true)) {
        tell("waiting for the notification service: " + text + ". Ctrl-C gives up.");
    }
}

SaAisErrorT ask(const char* name, const std::function<SaAisErrorT()>& call) {
    SaAisErrorT answer = SA_AIS_OK;
    do {
        {
            const std::lock_guard lock(latest.mutex);
            latest.name = name;
            latest.answer = answer;
            latest.start = Clock::now();
        }
        answer = call();
        const bool isBusy = answer == SA_AIS_ERR_TRY_AGAIN;
        std::this_thread::sleep_for(isBusy ? kPause : 0ms);
        const std::lock_guard lock(latest.mutex);
        latest.waited += answer == SA_AIS_OK ? 0s : Clock::now() - *latest.start;
        latest.start.reset();
    } while (answer == SA_AIS_ERR_TRY_AGAIN);
    return answer;
}

Ntf::Ntf() {
    SaVersionT version{'A', 1, 1};
    ask<decltype(saNtfInitialize)>("saNtfInitialize", [&](auto* initialize) {
        return initialize(&m_handle, nullptr, &version);
    });
}

Ntf::~Ntf() {
    dolqctl::ask("saNtfFinalize", [this] { return m_finalize(m_handle); });
}

} // namespace dolqctl
