#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using std::chrono::system_clock;

// The system may count time in steps of a sixty-fourth of a second.
constexpr int64_t kStep = 16;

std::string Fields(const LocalTime& time) {
    return std::to_string(time.year) + "-" + std::to_string(time.month) + "-" + std::to_string(time.day) +
           " " + std::to_string(time.hour) + ":" + std::to_string(time.minute) + ":" +
           std::to_string(time.second);
}

std::tm LocalCalendar(std::time_t now) {
    std::tm parts{};
#ifdef _WIN32
    localtime_s(&parts, &now);
#else
    localtime_r(&now, &parts);
#endif
    return parts;
}

std::string FieldsOfNow() {
    const std::tm parts = LocalCalendar(std::time(nullptr));
    LocalTime time;
    time.year = static_cast<unsigned>(parts.tm_year + 1900);
    time.month = static_cast<unsigned>(parts.tm_mon + 1);
    time.day = static_cast<unsigned>(parts.tm_mday);
    time.hour = static_cast<unsigned>(parts.tm_hour);
    time.minute = static_cast<unsigned>(parts.tm_min);
    time.second = static_cast<unsigned>(parts.tm_sec);
    return Fields(time);
}

int64_t MillisecondsOf(system_clock::time_point time) {
    return std::chrono::duration_cast<milliseconds>(time.time_since_epoch()).count();
}

TEST(ReadLocalTime, IsWhatTheCalendarShows) {
    std::string expected;
    std::string read;
    // A second can begin between the two looks, but not each time.
    for (int look = 0; look < 5 && (look == 0 || read != expected); ++look) {
        expected = FieldsOfNow();
        read = Fields(ReadLocalTime());
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

// Under Wine a busy machine counts late.
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
    const auto passed = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start).count();
    EXPECT_GE(passed, 100 - 2 * kStep);
}

TEST(SleepMilliseconds, ComesBackAfterThatTime) {
    const auto start = steady_clock::now();
    SleepMilliseconds(1200);
    const auto passed = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start).count();
    EXPECT_GE(passed, 1200 - kStep);
    EXPECT_LE(passed, 60000);
}

}  // namespace
