// What the two workers have in common: when to go on receiving, what to take from the socket together, when
// to end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "platform/udp_socket.h"

// What a worker holds between receiving and working: as a rule one datagram, in a storm several that waited
// in the socket together. Its bounds keep small what a killed process loses and how long one write holds
// its file.
class ReceiveTurn {
  public:
    virtual ~ReceiveTurn() = default;

    // Where the next datagram goes. Empty: the turn is full.
    virtual std::span<uint8_t> Room() = 0;

    // `count` octets from `sender` have just arrived in that room.
    virtual void Take(size_t count, const Ipv4Endpoint& sender) = 0;

    virtual void Clear() = 0;
};

// Fills `turn`, calls `work` and clears the turn, until `socket` is closed or ServerState.running is clear;
// looks at the flag before the first receive. A datagram for which it had to wait found an empty socket and
// is a turn of its own; after it, whatever waits already is taken together, up to what the turn has room for.
// What was taken is worked on even when the socket is closed meanwhile. A receive error is retried after 10
// ms without limit and without a log line. What Take or `work` throws is swallowed.
void ReceiveWhileRunning(UdpSocket& socket, ReceiveTurn& turn, const std::function<void()>& work);
