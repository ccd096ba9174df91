// The worker for UDP 161. It logs the sender of each datagram and neither decodes nor answers it.
#pragma once

#include "platform/udp_socket.h"

// Logs datagrams until `listenerSocket` is closed. The socket must outlive the call.
void ListenerThread(UdpSocket& listenerSocket) noexcept;
