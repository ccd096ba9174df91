// The worker for UDP 162.
#pragma once

#include "platform/udp_socket.h"

// Receives and processes traps until `trapSocket` is closed or the receiver stops. Uses no other sockets, so
// a late thread cannot interfere with the next run. Both sockets must outlive the call; `forwardSocket` may
// be null. Throws nothing.
void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket) noexcept;
