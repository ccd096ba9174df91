// IPv4 datagram sockets that one thread may close while another receives or sends on them. Only one thread at
// a time receives or sends: waiting for a datagram and waiting for room may share one event.
//
// A socket is shared between the state that lists it and the worker that uses it, and is closed exactly once,
// by CloseUdpSocket. From then on every call on it answers as closed and the system's handle is never touched
// again: a worker that comes late cannot reach a newer socket that was given the same handle value. That is
// why nothing here blocks inside a call to the system: the handle is used under the socket's own lock for one
// attempt, and waiting, for a datagram or for room to send one, happens on an event beside the lock. So a
// close never waits for the network.
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
    Datagram,      // one datagram was taken, possibly of 0 octets
    NothingThere,  // none waits
    Closed,        // the socket was closed, before the call or during it
    Failed,        // any other error; trying again is reasonable
};

enum class SendResult {
    Sent,    // the system took it
    NoRoom,  // the system's buffer is full, as on a slow line
    Closed,  // the socket was closed before the call
    Failed,  // any other error
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

// Takes a datagram that waits in the socket: *size octets of it (what exceeds `capacity` is lost) and its
// sender, both untouched unless the result is Datagram. Never waits.
ReceiveResult TakeDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                           Ipv4Endpoint* sender);

// Waits until there may be a datagram to take or the waiting is ended; may return early. False: the system
// refused to wait.
bool WaitForDatagram(UdpSocket& socket);

// Both: takes a datagram, waiting for it as long as the socket is open. Never NothingThere.
ReceiveResult ReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                              Ipv4Endpoint* sender);

// One attempt. Never waits.
SendResult TrySendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size);

// Waits until there may be room for a datagram that found none; may return early. False: the waiting is
// ended, or the system refused to wait.
bool WaitForRoom(UdpSocket& socket);

// Both: one datagram, sent as soon as there is room for it. NoRoom: the waiting was ended before.
SendResult SendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size);

// From now on nothing waits for room on this socket: what the system takes at once is still sent. Wakes who
// waits. Not for a socket on which somebody receives.
void EndWaiting(UdpSocket& socket);

// Releases the port at once and ends the waiting. Harmless when closed already.
void CloseUdpSocket(UdpSocket& socket);

// True: `text` is a dotted IPv4 address (four decimal numbers, no blanks, no leading zeros, no short forms)
// and *address holds it in host order. False: anything else; *address untouched.
bool ParseIpv4Address(const std::string& text, uint32_t* address);
