// A UDP port in use by another program, such as a service.
#pragma once

#include <cstdint>

class ExclusivePort {
  public:
    explicit ExclusivePort(uint16_t port);  // binds without address reuse, so no other socket can
    ~ExclusivePort();
    ExclusivePort(const ExclusivePort&) = delete;
    ExclusivePort& operator=(const ExclusivePort&) = delete;

    bool bound() const { return bound_; }

  private:
    uintptr_t socket_;
    bool bound_ = false;
};
