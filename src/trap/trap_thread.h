// The worker for UDP 162.
#pragma once

#include "platform/udp_socket.h"

// Receives and processes traps until `trapSocket` is closed or the receiver stops. It knows no sockets but
// these two, so it can never serve a later run; the caller keeps them alive. Throws nothing.
void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket) noexcept;
