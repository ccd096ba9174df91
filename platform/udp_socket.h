// IPv4 datagram sockets that one thread may close while another receives on them.
//
// A socket is shared between the state that lists it and the worker that uses it, and is closed exactly once,
// by CloseUdpSocket. From then on every call on it answers as closed and the system's handle is never touched
// again: a worker that comes late cannot reach a newer socket that was given the same handle value. That is
// why receiving does not block inside the system's receive call: the handle is used under the socket's own
// lock for one attempt, and waiting happens on an event beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct Ipv4Endpoint {
    uint32_t address = 0;  // host order: 127.0.0.1 is 0x7F000001
    uint16_t port = 0;     // host order
};

struct UdpSocket;
using UdpSocketRef = std::shared_ptr<UdpSocket>;  // null: no socket

enum class ReceiveResult {
    Datagram,  // one datagram was taken, possibly of 0 octets
    Closed,    // the socket was closed, before the call or during it
    Failed,    // any other error; trying again is reasonable
};

// The socket library as a whole: once before the first socket, once after the last. False: not to be had.
bool StartSocketLibrary();
void StopSocketLibrary();

// A new, unbound socket; null when the system has none to give or memory is short.
UdpSocketRef OpenUdpSocket();

// Binds to all addresses with address reuse set, so that a port just left can be taken again at once.
bool BindToAllAddresses(UdpSocket& socket, uint16_t port);

// Asks for a receive buffer of `octets`; the system may grant less, and a refusal changes nothing.
void RequestReceiveBuffer(UdpSocket& socket, int octets);

// The receive buffer that the system says it granted, in octets; 0 when it does not say.
int QueryReceiveBuffer(UdpSocket& socket);

// Waits for a datagram and takes it: *size octets of it (what exceeds `capacity` is lost) and its sender.
// *size and *sender are untouched unless the result is Datagram. One receiving thread a socket.
ReceiveResult ReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                              Ipv4Endpoint* sender);

enum class SendResult { Sent, Closed, Failed };

// One attempt; Failed: the system refused it.
SendResult SendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size);

// Releases the port at once and wakes the thread that waits in ReceiveDatagram. Harmless when closed already.
void CloseUdpSocket(UdpSocket& socket);

// True: `text` is a dotted IPv4 address (four decimal numbers, no blanks, no leading zeros, no short forms)
// and *address holds it in host order. False: anything else; *address untouched.
bool ParseIpv4Address(const std::string& text, uint32_t* address);
