#include "core/timestamp.h"

#include <gtest/gtest.h>

namespace {

TEST(FormatTimestamp, FieldsArePaddedWithZeros) {
    EXPECT_EQ(FormatTimestamp({2026, 3, 7, 9, 5, 2, 47}), L"2026-03-07 09:05:02.047");
    EXPECT_EQ(FormatTimestamp({2026, 12, 31, 23, 59, 59, 999}), L"2026-12-31 23:59:59.999");
    EXPECT_EQ(FormatTimestamp({1, 1, 1, 0, 0, 0, 0}), L"0001-01-01 00:00:00.000");
    EXPECT_EQ(FormatTimestamp({2026, 3, 7, 9, 5, 2, 7}), L"2026-03-07 09:05:02.007");
    EXPECT_EQ(FormatTimestamp({}), L"0000-00-00 00:00:00.000") << "a default LocalTime";
}

TEST(FormatTimestamp, WithoutATimeFormatsTheCurrentOne) {
    const std::wstring before = FormatTimestamp(ReadLocalTime());
    const std::wstring now = FormatTimestamp();
    const std::wstring after = FormatTimestamp(ReadLocalTime());
    EXPECT_EQ(now.size(), 23U);
    // Stamps sort by time, except in the hour that daylight saving repeats.
    EXPECT_TRUE(before > after || (before <= now && now <= after)) << testing::PrintToString(now);
}

}  // namespace
