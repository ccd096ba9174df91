// A UDP socket that a test sends from and receives on.
#pragma once

#include <cstdint>

#include "tests/support/ber_encoder.h"

constexpr uint32_t kLoopback = 0x7F000001;
constexpr uint16_t kTrapPort = 162;

// Bound to a free port of 127.0.0.1: the Windows firewall asks about a program that listens on all addresses.
// Needs StartSocketLibrary. Every failure here fails the test.
class LoopbackClient {
  public:
    LoopbackClient();
    ~LoopbackClient();
    LoopbackClient(const LoopbackClient&) = delete;
    LoopbackClient& operator=(const LoopbackClient&) = delete;

    uint16_t port() const { return port_; }

    // Sends one datagram to 127.0.0.1. It may arrive after this returns.
    void Send(const Octets& octets, uint16_t toPort = kTrapPort) const;

    // Returns the next datagram. If none arrives within 20 seconds, fails the test and returns no octets. To
    // expect no datagram, send a marker to port() and receive that.
    Octets Receive() const;

    // Frees the port. Nothing can be sent or received afterwards.
    void Close();

  private:
    uintptr_t socket_;
    uint16_t port_ = 0;
};
