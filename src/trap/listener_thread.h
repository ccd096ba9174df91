// The worker for UDP 161: it keeps the port in use and logs each datagram; nothing is decoded, nothing
// is answered.
#pragma once

#include "platform/udp_socket.h"

// Logs datagrams until `listenerSocket` is closed or the receiver stops. Throws nothing.
void ListenerThread(UdpSocket& listenerSocket) noexcept;
