// A receiver's socket seen from outside, in the system's table of sockets. Linux.
#pragma once

#include <cstdint>

struct SocketState {
    uint64_t waiting = 0;  // octets as the system counts them, its own overhead included
    uint64_t lost = 0;     // datagrams that found the buffer full
};

// Of the socket that listens on the UDP port; ends the program when there is none.
SocketState ReadSocketState(uint16_t port);

// Looks again and again until at most `octets` wait.
void WaitWhileMoreWaits(uint16_t port, uint64_t octets);
