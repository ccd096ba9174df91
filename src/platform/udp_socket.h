// IPv4 datagram sockets that one thread may close while another receives or sends on them. Only one thread at
// a time receives or sends.
//
// A socket is shared between the state that lists it and the worker that uses it, and is closed exactly
// once, by CloseUdpSocket. From then on every call on it reports Closed and never uses the system's handle
// again: a late worker cannot reach a newer socket that was given the same handle value. Therefore nothing
// here blocks inside a call to the system: the handle is used under the socket's own lock for one attempt,
// and waiting, for a datagram or for room to send one, uses an event outside the lock. So a close never
// waits for the network.
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
    Datagram,       // one datagram was received, possibly of 0 octets
    NothingQueued,  // no datagram is queued
    Closed,         // the socket was closed, before the call or during it
    Failed,         // any other error; trying again is reasonable
};

enum class SendResult {
    Sent,    // accepted by the system
    NoRoom,  // the system's buffer is full, as on a slow line
    Closed,  // the socket was closed before the call
    Failed,  // any other error
};

// The socket library as a whole: once before the first socket, once after the last. False: not available.
bool StartSocketLibrary();
void StopSocketLibrary();

// A new, unbound socket; null when the system refuses one or memory is short. On Windows, ICMP errors that
// earlier sends caused (or that somebody forged) do not show up as errors of later calls.
UdpSocketRef OpenUdpSocket();

// Binds to all addresses with address reuse set, so that a port just left can be taken again at once.
bool BindToAllAddresses(UdpSocket& socket, uint16_t port);

// Asks for a receive buffer of `octets`; the system may grant less, and a refusal changes nothing.
void RequestReceiveBuffer(UdpSocket& socket, int octets);

// Receives a queued datagram: *size octets of it (what exceeds `capacity` is lost) and its sender, both
// untouched unless the result is Datagram. Never waits.
ReceiveResult TryReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                                 Ipv4Endpoint* sender);

// Waits until a datagram may be queued or the socket is closed; may return early. False: the system refused
// to wait.
bool WaitForDatagram(UdpSocket& socket);

// One attempt. Never waits.
SendResult TrySendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size);

// After NoRoom: waits until there may be room; may return early. False: EndWaiting or CloseUdpSocket was
// called, or the system refused to wait.
bool WaitForRoom(UdpSocket& socket);

// Wakes a thread that waits for room; from now on nothing waits for room on this socket, while sends that the
// system accepts at once still succeed. Not for a socket on which somebody receives.
void EndWaiting(UdpSocket& socket);

// Releases the port at once and wakes any waiting thread. A no-op when closed already.
void CloseUdpSocket(UdpSocket& socket);

// True: `text` is a dotted IPv4 address (four decimal numbers, no blanks, no leading zeros, no short forms)
// and *address holds it in host order. False: anything else; *address untouched.
bool ParseIpv4Address(const std::string& text, uint32_t* address);
