// UDP 161 is kept occupied and every datagram there noted in the log; nothing is decoded, kept or answered.
#pragma once

#include "platform/udp_socket.h"

// Body of the worker for UDP 161: logs datagrams until its socket is closed or the receiver stops.
// Throws nothing.
void ListenerThread(UdpSocket& listenerSocket);
