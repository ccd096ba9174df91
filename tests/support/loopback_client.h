// A UDP socket that a test sends from and receives on.
#pragma once

#include <chrono>
#include <cstdint>

#include "tests/support/ber_encoder.h"

constexpr uint32_t kLoopback = 0x7F000001;
constexpr uint16_t kTrapPort = 162;

// Bound to 127.0.0.1 and a port that the system chooses: Windows' firewall asks about a program that
// listens on all addresses. Needs StartSocketLibrary. Every failure here fails the test.
class LoopbackClient {
  public:
    LoopbackClient();
    ~LoopbackClient();
    LoopbackClient(const LoopbackClient&) = delete;
    LoopbackClient& operator=(const LoopbackClient&) = delete;

    uint16_t port() const { return port_; }

    // Sends one datagram to 127.0.0.1. It may arrive after this returns.
    void Send(const Octets& octets, uint16_t toPort = kTrapPort) const;

    // The next datagram that arrives within `limit`; empty if there is none, which also fails the test.
    // A test that expects no datagram sends itself a marker and receives that.
    Octets Receive(std::chrono::milliseconds limit = std::chrono::seconds(20)) const;

    // Frees the port; nothing can be sent or received from then on.
    void Close();

  private:
    uintptr_t socket_;
    uint16_t port_ = 0;
};
