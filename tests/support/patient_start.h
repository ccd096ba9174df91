// Starting a program under Wine, where less than one start in a thousand fails with an internal error. Only
// that error is retried.
#pragma once

#include "platform/windows/windows_headers.h"

// `create` starts a process and returns what CreateProcessW does. Returns ERROR_SUCCESS, or the system's
// error when nothing was started.
template <typename Create>
DWORD StartPatiently(const Create& create) {
    constexpr int kAttempts = 3;
    DWORD error = ERROR_INTERNAL_ERROR;
    for (int attempt = 0; attempt < kAttempts && error == ERROR_INTERNAL_ERROR; ++attempt) {
        error = create() ? ERROR_SUCCESS : GetLastError();
    }
    return error;
}
