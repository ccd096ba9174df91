// IPv4 datagram sockets. One thread may close a socket while another receives or sends on it; only one thread
// at a time may receive or send.
//
// A UdpSocketRef shares ownership, so the object lives as long as a worker uses it. CloseUdpSocket closes the
// system's handle; from then on receiving and sending return Closed and never use the handle again, so a late
// worker cannot reach a newer socket with the same handle value.
//
// Closing never waits for the network: receiving and sending lock the socket for one non-blocking attempt,
// and waiting for a datagram or for the send buffer happens outside the lock.
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
    Failed,         // any other error; a retry may succeed
};

enum class SendResult {
    Sent,        // accepted by the system
    BufferFull,  // the system's send buffer is full, as on a slow line
    Closed,      // the socket was closed before the call
    Failed,      // any other error
};

// Starts the socket library; required before the first socket. False: it is not available.
bool StartSocketLibrary();

// Stops it. No socket may be used afterwards.
void StopSocketLibrary();

// Returns a new, unbound socket; null if the system refuses one or memory runs out. On Windows, ICMP errors,
// genuine or forged, do not make later calls fail.
UdpSocketRef OpenUdpSocket();

// Binds to `port` on all addresses, with address reuse on so that a port just closed can be bound again at
// once. False: the system refused.
bool BindToAllAddresses(UdpSocket& socket, uint16_t port);

// Requests a receive buffer of `octets`. The system may grant less or refuse; that is not reported.
void RequestReceiveBuffer(UdpSocket& socket, int octets);

// Receives one queued datagram and never waits. *size is its size, at most `capacity`: the rest of a longer
// datagram is lost. *size and *sender are unchanged unless the result is Datagram.
ReceiveResult TryReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                                 Ipv4Endpoint* sender);

// Waits until a datagram is queued or the socket is closed; may return early. False: the system refused to
// wait.
bool WaitForDatagram(UdpSocket& socket);

// Waits until the socket is closed; returns at once if the system refuses to wait.
void WaitForClose(UdpSocket& socket);

// Makes one attempt to send and never waits.
SendResult TrySendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size);

// Call after BufferFull: waits until the send buffer has space; may return early. False: EndWaiting or
// CloseUdpSocket was called, or the system refused to wait.
bool WaitForSendBuffer(UdpSocket& socket);

// Wakes a thread in WaitForSendBuffer. From then on that returns false at once; TrySendDatagram still
// works. Not allowed on a socket that receives.
void EndWaiting(UdpSocket& socket);

// Closes the socket, which releases its port at once, and wakes any waiting thread. A no-op if it is closed
// already.
void CloseUdpSocket(UdpSocket& socket);

// True: `text` is a dotted IPv4 address (four decimal numbers, no blanks, no leading zeros, no short forms),
// and *address is set in host order. False: it is not; *address is unchanged.
bool ParseIpv4Address(const std::string& text, uint32_t* address);
