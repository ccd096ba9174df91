// Starting a program under Wine, which now and then, less than once in a thousand starts, gives a process up
// before it comes to its program: an internal error. So that answer, and no other, is asked about again.
#pragma once

#include "platform/windows/windows_headers.h"

// `create` starts a process and answers as CreateProcessW does. Returns ERROR_SUCCESS, or the system's error
// when nothing was started.
template <typename Create>
DWORD StartPatiently(const Create& create) {
    constexpr int kAttempts = 3;
    DWORD error = ERROR_INTERNAL_ERROR;
    for (int attempt = 0; attempt < kAttempts && error == ERROR_INTERNAL_ERROR; ++attempt) {
        error = create() ? ERROR_SUCCESS : GetLastError();
    }
    return error;
}
