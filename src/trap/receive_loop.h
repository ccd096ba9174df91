// The receive loop of both workers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/udp_socket.h"

// The datagrams that a worker has received and not processed yet: usually one, in a burst several that were
// queued in the socket. Each kind of batch has a maximum size, which limits what is lost if the process is
// killed and how long one write locks FileLock.
class ReceiveBatch {
  public:
    virtual ~ReceiveBatch() = default;

    // Returns the buffer for the next datagram, empty if the batch is full.
    virtual std::span<uint8_t> FreeSpace() = 0;

    // Adds the datagram of `count` octets that was just received into FreeSpace().
    virtual void AddArrival(size_t count, const Ipv4Endpoint& sender) = 0;

    // Processes all datagrams in order and empties the batch.
    virtual void Process() = 0;
};

// Receives and processes datagrams until `socket` is closed. A stop first clears ServerState.running: a call
// that is receiving at that moment may still return a datagram, and no other call is made. All received
// datagrams are processed; then this waits for the socket to be closed.
//
// If the socket was empty, the next datagram is processed alone; otherwise all queued datagrams form a batch,
// up to its maximum size. After a receive error the loop waits 10 ms and tries again, without limit and
// without a log line.
void ReceiveWhileRunning(UdpSocket& socket, ReceiveBatch& batch);
