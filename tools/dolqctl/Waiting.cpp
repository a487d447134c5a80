#include "Waiting.h"

#include <csignal>
#include <future>
#include <thread>
#include <utility>

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

} // namespace

void Waiting::heedSignals() {
    const auto giveUp = [](int signal) { givenUp = signal; };
    std::signal(SIGINT, giveUp);
    std::signal(SIGTERM, giveUp);
}

SaAisErrorT Waiting::call(const std::string& name, const std::function<SaAisErrorT()>& call) {
    for (;;) {
        const Clock::time_point start = Clock::now();
        std::packaged_task<SaAisErrorT()> task(call);
        std::future<SaAisErrorT> answer = task.get_future();
        std::thread(std::move(task)).detach();
        while (answer.wait_for(kPause) == std::future_status::timeout) {
            bear(Clock::now() - start, name, "has not answered");
        }
        const SaAisErrorT code = answer.get();
        if (code == SA_AIS_OK) {
            return code;
        }
        const bool isBusy = code == SA_AIS_ERR_TRY_AGAIN;
        if (isBusy) {
            std::this_thread::sleep_for(kPause);
            bear(Clock::now() - start, name, "answers " + common::aisText(code));
        }
        m_waited += Clock::now() - start;
        if (!isBusy) {
            return code;
        }
    }
}

void Waiting::bear(std::chrono::nanoseconds time, const std::string& name,
                   const std::string& answer) {
    const std::string text = name + ' ' + answer;
    if (givenUp != 0) {
        throw GivenUp("given up: " + text, givenUp);
    }
    if (m_waited + time >= kLimit) {
        throw GivenUp("given up after " + std::to_string(kLimit.count()) + " s of waiting: " + text,
                      0);
    }
    if (m_waited + time >= kQuiet && !std::exchange(m_hasTold, true)) {
        tell("waiting for the notification service: " + text + ". Ctrl-C gives up.");
    }
}

} // namespace dolqctl
