// A receiver's socket as the system's socket table shows it. Linux.
#pragma once

#include <cstdint>

struct SocketState {
    uint64_t queued = 0;  // octets, including the system's own overhead
    uint64_t lost = 0;    // datagrams dropped because the buffer was full
};

// Returns the state of the socket on this UDP port. Ends the program if there is none.
SocketState ReadSocketState(uint16_t port);

// Polls until at most `octets` are queued.
void WaitUntilDrained(uint16_t port, uint64_t octets = 0);
