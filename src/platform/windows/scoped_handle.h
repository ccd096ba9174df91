// Owns one kernel handle.
#pragma once

#include <utility>

#include "platform/windows/windows_headers.h"

class ScopedHandle {
  public:
    ScopedHandle() = default;
    // Takes both values by which the system says "none".
    explicit ScopedHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ScopedHandle(ScopedHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    ScopedHandle& operator=(ScopedHandle&&) = delete;
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;
    ~ScopedHandle() { Reset(nullptr); }

    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

    // Closes what it owned and owns `handle` from here on.
    void Reset(HANDLE handle) {
        if (handle_ != nullptr) {
            CloseHandle(handle_);
        }
        handle_ = handle;
    }

  private:
    HANDLE handle_ = nullptr;
};
