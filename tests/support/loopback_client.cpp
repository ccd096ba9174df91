#include "tests/support/loopback_client.h"

#include <gtest/gtest.h>

#include <utility>

// Uses the system's sockets, since the program's own cannot be bound to a single address.
#ifdef _WIN32
#include "platform/windows/windows_headers.h"

// Needs the types of the header above.
#include <mswsock.h>
#else
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#endif

namespace {

constexpr int kReceiveSeconds = 20;

#ifdef _WIN32

using NativeSocket = SOCKET;
using AddressSize = int;
using DataSize = int;

void CloseNative(NativeSocket socket) {
    closesocket(socket);
}

// By default Windows reports a datagram sent to a closed port as an error of a later call on the same socket.
// Some tests send to a stopped receiver.
void IgnoreUnreachablePorts(NativeSocket socket) {
    BOOL report = FALSE;
    DWORD got = 0;
    WSAIoctl(socket, SIO_UDP_CONNRESET, &report, sizeof report, nullptr, 0, &got, nullptr, nullptr);
}

void LimitReceiving(NativeSocket socket) {
    const DWORD milliseconds = kReceiveSeconds * 1000;
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&milliseconds),
               sizeof milliseconds);
}

#else

using NativeSocket = int;
using AddressSize = socklen_t;
using DataSize = size_t;

void CloseNative(NativeSocket socket) {
    close(socket);
}

void IgnoreUnreachablePorts(NativeSocket) {}

void LimitReceiving(NativeSocket socket) {
    const timeval limit = {kReceiveSeconds, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

#endif

constexpr uintptr_t kClosed = UINTPTR_MAX;

NativeSocket Native(uintptr_t socket) {
    return static_cast<NativeSocket>(socket);
}

sockaddr_in LoopbackAddress(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(kLoopback);
    return address;
}

}  // namespace

LoopbackClient::LoopbackClient() : socket_(static_cast<uintptr_t>(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP))) {
    IgnoreUnreachablePorts(Native(socket_));
    LimitReceiving(Native(socket_));
    sockaddr_in address = LoopbackAddress(0);
    AddressSize size = sizeof address;
    EXPECT_EQ(bind(Native(socket_), reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(getsockname(Native(socket_), reinterpret_cast<sockaddr*>(&address), &size), 0);
    port_ = ntohs(address.sin_port);
}

LoopbackClient::~LoopbackClient() {
    Close();
}

void LoopbackClient::Send(const Octets& octets, uint16_t toPort) const {
    const sockaddr_in address = LoopbackAddress(toPort);
    const auto sent = sendto(Native(socket_), reinterpret_cast<const char*>(octets.data()),
                             static_cast<DataSize>(octets.size()), 0,
                             reinterpret_cast<const sockaddr*>(&address), sizeof address);
    EXPECT_EQ(static_cast<int64_t>(sent), static_cast<int64_t>(octets.size()));
}

Octets LoopbackClient::Receive() const {
    Octets octets(65535);
    const auto got = recvfrom(Native(socket_), reinterpret_cast<char*>(octets.data()),
                              static_cast<DataSize>(octets.size()), 0, nullptr, nullptr);
    EXPECT_GE(got, 0) << "no datagram arrived in time";
    octets.resize(got < 0 ? 0 : static_cast<size_t>(got));
    return octets;
}

void LoopbackClient::Close() {
    const uintptr_t socket = std::exchange(socket_, kClosed);
    if (socket != kClosed) {
        CloseNative(Native(socket));
    }
}
