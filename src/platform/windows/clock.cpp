#include "platform/clock.h"

#include "platform/windows/windows_headers.h"

LocalTime ReadLocalTime() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

uint64_t ReadTickCount() {
    return GetTickCount64();
}

void SleepMilliseconds(uint32_t milliseconds) {
    Sleep(milliseconds);
}
