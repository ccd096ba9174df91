#include "platform/clock.h"

#include <cerrno>
#include <ctime>

namespace {

constexpr long kNanosecondsPerMillisecond = 1000000;

}  // namespace

LocalTime ReadLocalTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    LocalTime time;
    time.year = static_cast<unsigned>(parts.tm_year + 1900);
    time.month = static_cast<unsigned>(parts.tm_mon + 1);
    time.day = static_cast<unsigned>(parts.tm_mday);
    time.hour = static_cast<unsigned>(parts.tm_hour);
    time.minute = static_cast<unsigned>(parts.tm_min);
    time.second = static_cast<unsigned>(parts.tm_sec);
    time.millisecond = static_cast<unsigned>(now.tv_nsec / kNanosecondsPerMillisecond);
    return time;
}

uint64_t ReadTickCount() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000U +
           static_cast<uint64_t>(now.tv_nsec / kNanosecondsPerMillisecond) + 1U;
}

void SleepMilliseconds(uint32_t milliseconds) {
    timespec left{};
    left.tv_sec = static_cast<time_t>(milliseconds / 1000);
    left.tv_nsec = static_cast<long>(milliseconds % 1000) * kNanosecondsPerMillisecond;
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}
