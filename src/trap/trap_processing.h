// What happens to a trap after it was received: decoded, recorded, announced, forwarded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/clock.h"
#include "platform/udp_socket.h"

struct TrapArrival {
    const uint8_t* octets = nullptr;
    size_t count = 0;  // may be 0
    Ipv4Endpoint sender;
    LocalTime time;
};

// Processes the traps of one batch in order. SNMP.txt, log.txt and the forwarded datagrams are the same as if
// each trap were processed alone. A trap that is alone in its batch is recorded and announced before it is
// forwarded; of several, some may be forwarded before the files are written, but nothing is left unwritten
// while a send waits for room. Memory that runs out for one trap costs at most
// that trap. `forwardSocket` may be
// null. Throws nothing.
void ProcessTraps(std::span<const TrapArrival> arrivals, UdpSocket* forwardSocket) noexcept;
