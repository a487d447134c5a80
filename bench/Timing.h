#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

template <typename Call> double secondsOf(Call call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Of at least one value. Unlike the mean it leaves out what the machine did in between.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace bench
