#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

namespace bench {

/// Of the clock on the wall.
template <typename Call> double secondsOf(Call call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Of the calling thread's processor time, which leaves out what other programs take.
template <typename Call> double cpuSecondsOf(Call call) {
    const auto now = [] {
        std::timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double begin = now();
    call();
    return now() - begin;
}

/// Of at least one value. Unlike the mean it leaves out what the machine did in between.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace bench
