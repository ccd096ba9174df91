// Another program that has a UDP port for itself alone, such as a service installed before us.
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
