// The worker for UDP 162.
#pragma once

#include "platform/udp_socket.h"

// Receives and processes traps until `trapSocket` is closed. Uses only these two sockets, so a thread that
// outlives its stop cannot interfere with the next run. Both must outlive the call; `forwardSocket` may be
// null.
void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket) noexcept;
