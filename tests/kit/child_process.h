// Programs that the check starts. None outlives the check.
#pragma once

#include <optional>
#include <string>

#include "platform/windows/scoped_handle.h"

struct ProgramResult {
    // Empty: it could not be started, or was terminated at its time limit.
    std::optional<DWORD> exitCode;
    std::string ending;  // the same in words
    std::string output;
};

// Runs `commandLine` in `folder` and waits for its end, at most `milliseconds`. Returns the output of it and
// its children. They all belong to one job, which ends with this call.
ProgramResult RunProgram(const std::wstring& commandLine, const std::wstring& folder, DWORD milliseconds);
