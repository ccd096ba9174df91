// Passing datagrams on: the same octets, once, to the one address of the settings. No queue, no retry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/udp_socket.h"

// Sends when forwarding is on, `socket` is there and the settings hold a dotted IPv4 address; does nothing
// otherwise. The settings are read anew on each call, so a change holds from the next datagram on. Waits for
// room as long as the receiver runs. Appends to `logLines` (core/activity_log.h) a line about a send that the
// system refused, and about one that a stop found waiting. Trap thread. May throw std::bad_alloc. Kept: a
// target on this machine's own port 162 comes back as a new trap, without end; nothing guards against it.
void ForwardDatagram(const uint8_t* octets, size_t count, UdpSocket* socket, std::string& logLines);
