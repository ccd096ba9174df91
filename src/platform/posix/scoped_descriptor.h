// Owns one file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

class ScopedDescriptor {
  public:
    explicit ScopedDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    ScopedDescriptor(ScopedDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    ScopedDescriptor& operator=(ScopedDescriptor&&) = delete;
    ScopedDescriptor(const ScopedDescriptor&) = delete;
    ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;
    ~ScopedDescriptor() { Reset(); }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }

    void Reset() {
        if (descriptor_ >= 0) {
            close(std::exchange(descriptor_, -1));
        }
    }

  private:
    int descriptor_;
};
