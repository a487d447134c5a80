#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <random>
#include <string>

constexpr unsigned kLongestLife = 100; // seconds: a process that lives longer hangs

/// How far the threads of a round are, those of all processes. Outlives the killed ones.
struct Ledger {
    struct Thread {
        std::atomic<unsigned> begun{0};
        std::atomic<unsigned> done{0};
    };
    std::array<Thread, 1024> of;
    std::atomic<unsigned> threads{0};
    std::atomic<unsigned> forks{0};
    std::atomic<unsigned> exits{0};
};

class Dice : public std::mt19937_64 {
public:
    using std::mt19937_64::mt19937_64;
    unsigned below(unsigned end) { return static_cast<unsigned>((*this)() % end); }
    bool oneOf(unsigned times) { return below(times) == 0; }
};

/// The object of a thread's alarm, the alarms counted from 1.
inline std::string alarmName(unsigned thread, unsigned alarm) {
    return "Thread=" + std::to_string(thread) + ",Alarm=" + std::to_string(alarm);
}

/// Lives some days in this process, as the dice fall, and ends it: with 0 if all that the days took
/// was given back, else with 1.
[[noreturn]] void runApplication(Ledger& ledger, Dice dice);
