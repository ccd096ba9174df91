// Forwarding: the same octets, once, to the one address of the settings. No queue, no retry.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/udp_socket.h"
#include "trap/pending_output.h"

// Sends when forwarding is on, `socket` is not null and the settings hold a dotted IPv4 address; otherwise
// does nothing. The settings are read on each call, so a change applies to the next datagram. If the system
// has no room, writes `output` and waits for room until EndWaiting or CloseUdpSocket was called for the
// socket. Adds a log line to `output` when the system refused the send or the wait ended without room. May
// throw std::bad_alloc. Trap thread.
// Intentional: a target that is this computer's own port 162 comes back as a new trap, without end.
void ForwardDatagram(const uint8_t* octets, size_t count, UdpSocket* socket, PendingOutput& output);
