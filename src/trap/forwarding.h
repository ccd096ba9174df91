// Forwards received datagrams unchanged to the one target in the settings. Nothing is queued or sent twice.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/udp_socket.h"
#include "trap/pending_output.h"

// Sends the datagram through `socket` if forwarding is on, `socket` is not null and the settings contain a
// dotted IPv4 address; otherwise does nothing. The settings are read on each call, so a change applies to the
// next datagram. May throw std::bad_alloc. Trap thread only.
//
// If the system's send buffer is full, writes `output` (unless the receiver is stopping), then waits and
// retries until EndWaiting or CloseUdpSocket is called on `socket`. Adds a log line to `output` if the system
// refused the send or the buffer was still full in the end.
//
// Intentional: the target is not compared with this computer's own addresses. A datagram that is forwarded to
// this computer's port 162 arrives as a new trap and loops forever.
void ForwardDatagram(const uint8_t* octets, size_t count, UdpSocket* socket, PendingOutput& output);
