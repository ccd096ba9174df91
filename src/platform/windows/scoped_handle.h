// Owns one kernel handle.
#pragma once

#include "platform/scoped.h"
#include "platform/windows/windows_headers.h"

struct KernelHandle {
    using Value = HANDLE;
    static constexpr Value kNone = nullptr;
    // The system has two values for no handle: CreateFileW returns INVALID_HANDLE_VALUE, most others null.
    static bool IsOpen(Value handle) { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
    static void Close(Value handle) { CloseHandle(handle); }
};
using ScopedHandle = Scoped<KernelHandle>;
