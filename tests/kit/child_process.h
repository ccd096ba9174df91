// Runs programs that end with the check at the latest.
#pragma once

#include <optional>
#include <string>

#include "platform/windows/scoped_handle.h"

struct ProgramResult {
    // Empty if the program could not be started or was terminated at its time limit.
    std::optional<DWORD> exitCode;
    std::string ending;  // the same in words
    std::string output;
};

// Runs `commandLine` in `folder` for at most `milliseconds`. Returns the output of the program and its
// children. They all belong to one job, which is terminated when this returns.
ProgramResult RunProgram(const std::wstring& commandLine, const std::wstring& folder, DWORD milliseconds);
