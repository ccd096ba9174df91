#include "trap/pending_output.h"

#include <utility>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"

void PendingOutput::AddRecord(std::wstring record) {
    records_.push_back(std::move(record));
}

void PendingOutput::AddLogLine(std::wstring_view message) {
    logLines_.push_back(FormatLogLine(message));
}

void PendingOutput::Write() noexcept {
    AppendAllToFile(AppPaths.trapFilePath, records_);
    records_.clear();
    AppendAllToFile(AppPaths.logFilePath, logLines_);
    logLines_.clear();
}
