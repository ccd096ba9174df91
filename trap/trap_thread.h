// The way of a trap: received, noted, decoded, recorded, announced, forwarded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/udp_socket.h"
#include "trap/varbind_list.h"

// What RecordTrap reuses from one datagram to the next.
struct TrapWorkspace {
    VarbindList bindings;
    std::wstring sender;
    std::wstring record;
    std::wstring logLine;
};

// Everything that happens to one datagram of `count` octets (0 included), from noting its arrival
// to forwarding it. Writes ServerState.lastTrapTick and lastTrapSender, SNMP.txt and log.txt. May
// throw std::bad_alloc.
void RecordTrap(const uint8_t* octets, size_t count, const Ipv4Endpoint& sender, UdpSocket* forwardSocket,
                TrapWorkspace& workspace);

// Body of the worker for UDP 162: records datagrams until its socket is closed or the receiver stops. It
// knows no sockets but these, so it can never serve a later run; whoever starts it keeps them alive. Throws
// nothing: what goes wrong with one datagram (memory ran out) costs that datagram and no other.
void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket);
