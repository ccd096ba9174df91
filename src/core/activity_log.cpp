#include "core/activity_log.h"

#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/file_text.h"

namespace {

constexpr size_t kStampLength = 23;

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
    stamp.reserve(kStampLength);
    AppendTimestamp(stamp, ReadLocalTime());
    return stamp;
}

void AppendLogLine(std::wstring_view message, std::string& octets) {
    std::wstring line;
    line.reserve(kStampLength + 2 + message.size() + 2);
    AppendTimestamp(line, ReadLocalTime());
    line.append(L"  ").append(message).append(L"\r\n");
    AppendFileLines(line, octets);
}

void LogMessage(std::wstring_view message) noexcept try {
    std::string octets;
    AppendLogLine(message, octets);
    AppendLinesToFile(AppPaths.logFilePath, octets);
} catch (...) {
    // There is no other log to report to.
}
