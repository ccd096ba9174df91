// The two calls that wait, the same on every system: one attempt after the other until one of them is
// an answer.
#include "platform/udp_socket.h"

ReceiveResult ReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                              Ipv4Endpoint* sender) {
    ReceiveResult result = TakeDatagram(socket, buffer, capacity, size, sender);
    while (result == ReceiveResult::NothingThere) {
        result = WaitForDatagram(socket) ? TakeDatagram(socket, buffer, capacity, size, sender)
                                         : ReceiveResult::Failed;
    }
    return result;
}

SendResult SendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size) {
    SendResult result = TrySendDatagram(socket, target, octets, size);
    while (result == SendResult::NoRoom && WaitForRoom(socket)) {
        result = TrySendDatagram(socket, target, octets, size);
    }
    return result;
}
