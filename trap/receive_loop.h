// What the two workers have in common: when to go on receiving and when to end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/udp_socket.h"

// Hands each datagram to `handle` until `socket` is closed or ServerState.running is clear; looks at the flag
// before the first receive. A receive error is retried after 10 ms without limit and without a log line. What
// `handle` throws is swallowed: it costs that one datagram.
void ReceiveWhileRunning(UdpSocket& socket, uint8_t* buffer, size_t capacity,
                         const std::function<void(size_t size, const Ipv4Endpoint& sender)>& handle);
