// The clocks and the sleep that portable code uses.
#pragma once

#include <cstdint>

// Local wall-clock time. Months are 1 to 12, days 1 to 31.
struct LocalTime {
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    unsigned millisecond = 0;
};

LocalTime ReadLocalTime();

// Returns the milliseconds of a monotonic clock that ignores changes of the wall clock. Never 0, since it
// started before this process.
uint64_t ReadTickCount();

void SleepMilliseconds(uint32_t milliseconds);
