// The way of a trap: received, noted, decoded, recorded, announced, forwarded.
#pragma once

#include <span>
#include <string>

#include "platform/udp_socket.h"
#include "trap/trap_turn.h"
#include "trap/varbind_list.h"

// What RecordTraps reuses from one turn to the next.
struct TrapWorkspace {
    VarbindList bindings;
    std::wstring sender;
    std::wstring record;
    std::wstring message;
    std::string records;   // of the turn, as SNMP.txt holds them
    std::string logLines;  // of the turn, as log.txt holds them
};

// Everything that happens to the traps of one turn once they have arrived. SNMP.txt is opened once and
// log.txt once, and what they and the wire see is what as many turns of one trap each would give, but that
// lines about datagrams which could not be forwarded stand behind all other lines of their turn. Memory that
// runs out for one trap costs that trap, or only its log line or its forwarding, and no other. Throws what a
// refused FileLock throws.
void RecordTraps(std::span<TrapArrival> arrivals, UdpSocket* forwardSocket, TrapWorkspace& workspace);

// Body of the worker for UDP 162: records datagrams until its socket is closed or the receiver stops. It
// knows no sockets but these, so it can never serve a later run; whoever starts it keeps them alive.
// Throws nothing.
void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket);
