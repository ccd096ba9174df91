// A receiver's socket seen from outside, in the system's table of sockets. Linux.
#pragma once

#include <cstdint>

struct SocketState {
    uint64_t waiting = 0;  // octets as the system counts them, its own overhead included
    uint64_t lost = 0;     // datagrams that found the buffer full
};

// Returns the state of the socket on this UDP port. Ends the program if there is none.
SocketState ReadSocketState(uint16_t port);

// Polls until at most `octets` wait.
void WaitWhileMoreWaits(uint16_t port, uint64_t octets);
