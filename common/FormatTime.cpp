#include "common/FormatTime.h"

#include <cstdio>

namespace common {

namespace {

constexpr std::int64_t kNsPerDay = 86'400'000'000'000;
constexpr int kDaysFrom1600To1970 = 135'140;

bool isLeap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

} // namespace

// Computed here, because gmtime_r takes a lock, which a forked process could find taken for ever.
std::string formatTime(std::int64_t timeNs) {
    std::int64_t ns = timeNs % kNsPerDay;
    int day = static_cast<int>(timeNs / kNsPerDay);
    if (ns < 0) {
        ns += kNsPerDay;
        --day;
    }
    day += kDaysFrom1600To1970; // not negative: 64 bits of nanoseconds reach back to 1677
    int year = 1600;
    for (int length; day >= (length = isLeap(year) ? 366 : 365); ++year) {
        day -= length;
    }
    const int lengths[] = {31, isLeap(year) ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int month = 0;
    for (; day >= lengths[month]; ++month) {
        day -= lengths[month];
    }
    const auto seconds = static_cast<int>(ns / 1'000'000'000);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", year, month + 1,
                  day + 1, seconds / 3600, seconds / 60 % 60, seconds % 60,
                  static_cast<int>(ns / 1000 % 1'000'000));
    return text;
}

} // namespace common
