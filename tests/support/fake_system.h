// Scripted sockets, threads and clock, linked instead of the real ones: no real system refuses a socket,
// fills a send buffer or stops a receiver at a chosen moment.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/udp_socket.h"
#include "tests/support/ber_encoder.h"

struct UdpSocket {
    std::string name;
};

struct FakeSystem {
    std::vector<std::string> steps;  // the program's calls, in order
    LocalTime now = {2026, 3, 7, 9, 5, 2, 47};

    int socketsLeft = 3;
    int threadsLeft = 2;
    uint16_t portInUse = 0;

    struct Reception {
        ReceiveResult result = ReceiveResult::Datagram;
        Octets octets = {1};
        Ipv4Endpoint sender = {0x0A010203, 49152};
    };
    std::deque<Reception> receptions;  // Closed when there are none left
    std::function<void()> onReceive;   // after each datagram
    int waitsRefused = 0;              // this many waits for a datagram fail
    bool waitedForClose = false;

    struct Sending {
        Octets octets;
        Ipv4Endpoint target;
    };
    std::vector<Sending> attempts;       // every attempt to send
    std::deque<SendResult> sendResults;  // Sent when there are none left
    std::function<bool()> onWaitForSendBuffer;

    int sockets = 0;
    int threads = 0;
};
extern FakeSystem Fake;
