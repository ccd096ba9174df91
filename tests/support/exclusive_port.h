// Another program that holds a UDP port for itself alone, as a service installed before us would.
#pragma once

#include <cstdint>

class ExclusivePort {
  public:
    explicit ExclusivePort(uint16_t port);  // bound without address reuse, so nobody else can bind it
    ~ExclusivePort();
    ExclusivePort(const ExclusivePort&) = delete;
    ExclusivePort& operator=(const ExclusivePort&) = delete;

    bool held() const { return held_; }

  private:
    uintptr_t socket_;
    bool held_ = false;
};
