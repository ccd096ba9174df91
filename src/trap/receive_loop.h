// What the two workers have in common: what they receive together, and when they end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/udp_socket.h"

// The datagrams that a worker received and has not handled yet: ordinarily one, in a burst several that were
// queued in the socket. Each kind of batch has a bound, which limits what a killed process loses and how long
// one write holds FileLock.
class ReceiveBatch {
  public:
    virtual ~ReceiveBatch() = default;

    // Where the next datagram is to be stored. Empty: the batch is full.
    virtual std::span<uint8_t> Room() = 0;

    // `count` octets from `sender` have just been stored in that room.
    virtual void AddArrival(size_t count, const Ipv4Endpoint& sender) = 0;

    // Handles all arrivals, in order. The batch is empty afterwards.
    virtual void Process() = 0;
};

// Receives on `socket` and processes what was received, until the socket is closed or ServerState.running is
// clear. Once that flag is clear nothing more is received (but for a receive that has just begun); what was
// received before is still processed. After an empty socket one datagram is waited for and is a batch of its
// own; then everything that is queued goes into the next batch, as far as it has room. A receive error is
// retried after 10 ms, without limit and without a log line.
void ReceiveWhileRunning(UdpSocket& socket, ReceiveBatch& batch);
