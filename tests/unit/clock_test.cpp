#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <string>
#include <thread>

#include "core/timestamp.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using std::chrono::system_clock;

// In milliseconds: the system clock may advance in steps of 1/64 second.
constexpr int64_t kStep = 16;

// The local time to the second, by the standard library.
std::wstring CalendarText() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
#ifdef _WIN32
    localtime_s(&parts, &now);
#else
    localtime_r(&now, &parts);
#endif
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return {text, text + std::char_traits<char>::length(text)};
}

int64_t MillisecondsOf(system_clock::time_point time) {
    return std::chrono::duration_cast<milliseconds>(time.time_since_epoch()).count();
}

TEST(ReadLocalTime, AgreesWithTheCalendar) {
    std::wstring expected;
    std::wstring read;
    // A second may begin between the two readings, but not every time.
    for (int attempt = 0; attempt < 5 && (attempt == 0 || read != expected); ++attempt) {
        expected = CalendarText();
        read = FormatTimestamp(ReadLocalTime()).substr(0, expected.size());
    }
    EXPECT_EQ(read, expected);
}

TEST(ReadLocalTime, CountsTheMillisecondsOfItsSecond) {
    constexpr int64_t kMinute = 60000;
    const int64_t before = MillisecondsOf(system_clock::now()) - kStep;
    const LocalTime time = ReadLocalTime();
    const int64_t after = MillisecondsOf(system_clock::now()) + kStep;
    EXPECT_LT(time.millisecond, 1000U);
    const int64_t sinceBefore = time.second * 1000 + time.millisecond - before % kMinute;
    EXPECT_LE((sinceBefore + kMinute) % kMinute, after - before);
}

// Under Wine the count lags on a busy machine.
TEST(ReadTickCount, CountsMillisecondsForwards) {
    const auto start = steady_clock::now();
    const uint64_t first = ReadTickCount();
    EXPECT_GT(first, 0U);
    for (uint64_t last = first; last - first < 100;) {
        ASSERT_LT(steady_clock::now() - start, milliseconds(20000)) << last - first;
        const uint64_t tick = ReadTickCount();
        ASSERT_GE(tick, last);
        last = tick;
        std::this_thread::yield();
    }
    EXPECT_GE(steady_clock::now() - start, milliseconds(100 - 2 * kStep));
}

TEST(SleepMilliseconds, ReturnsAfterThatTime) {
    const auto start = steady_clock::now();
    SleepMilliseconds(1200);
    EXPECT_GE(steady_clock::now() - start, milliseconds(1200 - kStep));
    EXPECT_LE(steady_clock::now() - start, milliseconds(60000));
}

}  // namespace
