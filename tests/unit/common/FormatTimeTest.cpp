#include "common/FormatTime.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(FormatTime, IsThatOfTheCalendar) { // date -u -d "@SECONDS" '+%FT%T'
    constexpr std::int64_t kSecond = 1'000'000'000;
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(common::formatTime(0), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(common::formatTime(-1), "1969-12-31T23:59:59.999999Z");
    EXPECT_EQ(common::formatTime(951'782'400 * kSecond + 1'999), "2000-02-29T00:00:00.000001Z");
    EXPECT_EQ(common::formatTime(1'735'689'599 * kSecond), "2024-12-31T23:59:59.000000Z");
    EXPECT_EQ(common::formatTime(4'107'542'399 * kSecond), "2100-02-28T23:59:59.000000Z");
    EXPECT_EQ(common::formatTime(4'107'542'400 * kSecond), "2100-03-01T00:00:00.000000Z");
    EXPECT_EQ(common::formatTime(Limits::min()), "1677-09-21T00:12:43.145224Z");
    EXPECT_EQ(common::formatTime(Limits::max()), "2262-04-11T23:47:16.854775Z");
}

} // namespace
