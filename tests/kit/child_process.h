// Programs that the check starts, each with an end: none outlives the check.
#pragma once

#include <optional>
#include <string>

#include "platform/windows/scoped_handle.h"

struct ProgramResult {
    // Nothing: it could not be started, or took longer than its time and was ended.
    std::optional<DWORD> exitCode;
    std::string ending;  // the same in words
    std::string output;
};

// Runs `commandLine` in `folder` and waits for its end, at most `milliseconds`; what it and its own children
// print comes back. They all belong to one job, which ends with this call.
ProgramResult RunProgram(const std::wstring& commandLine, const std::wstring& folder, DWORD milliseconds);
