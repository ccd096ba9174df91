#include "core/timestamp.h"

#include <cwchar>

std::wstring FormatTimestamp(const LocalTime& time) {
    wchar_t stamp[64];
    const int length =
        std::swprintf(stamp, std::size(stamp), L"%04u-%02u-%02u %02u:%02u:%02u.%03u", time.year, time.month,
                      time.day, time.hour, time.minute, time.second, time.millisecond);
    return {stamp, stamp + length};
}

std::wstring FormatTimestamp() {
    return FormatTimestamp(ReadLocalTime());
}
