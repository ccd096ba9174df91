// Starts a process under Wine, where less than one start in a thousand fails with an internal error. Retries
// after that error only.
#pragma once

#include "platform/windows/windows_headers.h"

// `create` returns the result of CreateProcessW. Returns ERROR_SUCCESS or the error of the last attempt.
template <typename Create>
DWORD StartWithRetries(const Create& create) {
    constexpr int kAttempts = 3;
    DWORD error = ERROR_INTERNAL_ERROR;
    for (int attempt = 0; attempt < kAttempts && error == ERROR_INTERNAL_ERROR; ++attempt) {
        error = create() ? ERROR_SUCCESS : GetLastError();
    }
    return error;
}
