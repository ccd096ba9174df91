// Sending and receiving that wait, for tests; the program itself waits in other places.
#pragma once

#include "platform/udp_socket.h"

// Receives a datagram, waiting for it as long as the socket is open. Never NothingQueued.
inline ReceiveResult ReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                                     Ipv4Endpoint* sender) {
    ReceiveResult result = TryReceiveDatagram(socket, buffer, capacity, size, sender);
    while (result == ReceiveResult::NothingQueued) {
        result = WaitForDatagram(socket) ? TryReceiveDatagram(socket, buffer, capacity, size, sender)
                                         : ReceiveResult::Failed;
    }
    return result;
}

// Sends as soon as there is room. NoRoom: waiting ended before.
inline SendResult SendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets,
                               size_t size) {
    SendResult result = TrySendDatagram(socket, target, octets, size);
    while (result == SendResult::NoRoom && WaitForRoom(socket)) {
        result = TrySendDatagram(socket, target, octets, size);
    }
    return result;
}
