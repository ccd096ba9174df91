#include "core/activity_log.h"

#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/timestamp.h"

std::wstring FormatLogLine(std::wstring_view message) {
    return FormatTimestamp().append(L"  ").append(message).append(L"\r\n");
}

void LogMessage(std::wstring_view message) noexcept try {
    AppendToFile(AppPaths.logFilePath, FormatLogLine(message));
} catch (...) {
    // There is no other log to report to.
}
