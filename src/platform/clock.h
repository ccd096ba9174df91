// The two clocks and the sleep that the portable code uses.
#pragma once

#include <cstdint>

// Local wall-clock time, fields as a calendar shows them (month 1 to 12, day 1 to 31).
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

// Milliseconds of a clock that never goes back and does not follow changes of the wall clock; its origin is
// some time before this process started, so it is never 0.
uint64_t ReadTickCount();

void SleepMilliseconds(uint32_t milliseconds);
