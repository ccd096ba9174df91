// Processes received traps: sets the last trap, decodes, records, logs and forwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/clock.h"
#include "platform/udp_socket.h"

// A received datagram. Its batch owns the octets.
struct TrapArrival {
    const uint8_t* octets = nullptr;
    size_t count = 0;  // may be 0
    Ipv4Endpoint sender;
    LocalTime time;
};

// Processes the traps of one batch in order. SNMP.txt, log.txt and the forwarded datagrams are the same as if
// each trap were processed alone. A trap that is alone in its batch is written to both files before it is
// forwarded. In a larger batch some traps may be forwarded before the files are written, but everything
// collected is written before a send waits for the send buffer.
//
// If memory runs out for a trap, at most that trap is lost. `forwardSocket` may be null. Throws nothing.
void ProcessTraps(std::span<const TrapArrival> arrivals, UdpSocket* forwardSocket) noexcept;
