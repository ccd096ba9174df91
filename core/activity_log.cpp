#include "core/activity_log.h"

#include "core/app_paths.h"
#include "core/data_files.h"

namespace {

void AppendPadded(std::wstring& text, unsigned value, int width) {
    wchar_t digits[10];
    wchar_t* const end = digits + 10;
    wchar_t* position = end;
    for (; width > 0 || value > 0; --width, value /= 10) {
        *--position = static_cast<wchar_t>(L'0' + value % 10);
    }
    text.append(position, static_cast<size_t>(end - position));
}

}  // namespace

void AppendTimestamp(std::wstring& text, const LocalTime& time) {
    AppendPadded(text, time.year, 4);
    text.push_back(L'-');
    AppendPadded(text, time.month, 2);
    text.push_back(L'-');
    AppendPadded(text, time.day, 2);
    text.push_back(L' ');
    AppendPadded(text, time.hour, 2);
    text.push_back(L':');
    AppendPadded(text, time.minute, 2);
    text.push_back(L':');
    AppendPadded(text, time.second, 2);
    text.push_back(L'.');
    AppendPadded(text, time.millisecond, 3);
}

std::wstring FormatTimestamp() {
    std::wstring stamp;
    stamp.reserve(23);
    AppendTimestamp(stamp, ReadLocalTime());
    return stamp;
}

void LogMessage(std::wstring_view message) noexcept try {
    std::wstring line;
    line.reserve(23 + 2 + message.size() + 2);
    AppendTimestamp(line, ReadLocalTime());
    line.append(L"  ").append(message).append(L"\r\n");
    AppendToFile(AppPaths.logFilePath, line);
} catch (...) {
    // There is no other log to report to.
}
