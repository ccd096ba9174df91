#include "platform/udp_socket.h"

#include <mutex>
#include <new>
#include <utility>

#include "platform/scoped.h"
#include "platform/windows/scoped_handle.h"

namespace {

struct SocketHandle {
    using Value = SOCKET;
    static constexpr Value kNone = INVALID_SOCKET;
    static bool IsOpen(Value handle) { return handle != INVALID_SOCKET; }
    static void Close(Value handle) { closesocket(handle); }
};
using ScopedSocket = Scoped<SocketHandle>;

// A lock that cannot fail, because it needs no memory and no handle. This toolchain's std::mutex may throw at
// its first use or its first contention, and a stop that throws half-way would leave a socket open. The
// member names are those that std::lock_guard requires.
class SystemLock {
  public:
    void lock() { AcquireSRWLockExclusive(&lock_); }
    void unlock() { ReleaseSRWLockExclusive(&lock_); }

  private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

}  // namespace

struct UdpSocket {
    explicit UdpSocket(ScopedSocket socket) : handle(std::move(socket)) {}

    SystemLock lock;      // guards `handle` while one call uses it
    ScopedSocket handle;  // reset by CloseUdpSocket

    // Auto-reset. The system sets it once after the socket is opened, when a datagram is queued, and when the
    // send buffer has space again after a send failed because it was full.
    const ScopedHandle readyEvent{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    // Set by EndWaiting and CloseUdpSocket, never reset.
    const ScopedHandle endEvent{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

namespace {

constexpr int kAddressSize = static_cast<int>(sizeof(sockaddr_in));

sockaddr_in MakeSystemAddress(const Ipv4Endpoint& endpoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(endpoint.address);
    return address;
}

ReceiveResult ClassifyReceiveError(int error) {
    switch (error) {
        case WSAEWOULDBLOCK:
            return ReceiveResult::NothingQueued;
        case WSAEINTR:
        case WSAENOTSOCK:
            return ReceiveResult::Closed;
        default:
            return ReceiveResult::Failed;
    }
}

// Without this, an ICMP message about an earlier datagram, which anybody can forge, makes the next receive or
// send fail. Not checked: if the system refuses, such a receive is retried and such a send is logged as
// failed.
void IgnoreIcmpErrors(SOCKET handle) {
    // SIO_UDP_CONNRESET and SIO_UDP_NETRESET, which not every toolchain's headers define.
    constexpr DWORD kUdpConnReset = _WSAIOW(IOC_VENDOR, 12);
    constexpr DWORD kUdpNetReset = _WSAIOW(IOC_VENDOR, 15);
    for (const DWORD option : {kUdpConnReset, kUdpNetReset}) {
        BOOL report = FALSE;
        DWORD returned = 0;
        WSAIoctl(handle, option, &report, sizeof report, nullptr, 0, &returned, nullptr, nullptr);
    }
}

enum class Wake { Ready, Ended, Refused };

Wake WaitForReady(const UdpSocket& socket, DWORD milliseconds) {
    const HANDLE waits[] = {socket.endEvent.get(), socket.readyEvent.get()};
    switch (WaitForMultipleObjects(2, waits, FALSE, milliseconds)) {
        case WAIT_OBJECT_0:
            return Wake::Ended;
        case WAIT_OBJECT_0 + 1:
        case WAIT_TIMEOUT:
            return Wake::Ready;
        default:
            return Wake::Refused;
    }
}

}  // namespace

bool StartSocketLibrary() {
    WSADATA data{};
    return WSAStartup(MAKEWORD(2, 2), &data) == 0;
}

void StopSocketLibrary() {
    WSACleanup();
}

UdpSocketRef OpenUdpSocket() try {
    ScopedSocket handle(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP));
    if (!handle) {
        return nullptr;
    }
    IgnoreIcmpErrors(handle.get());
    auto opened = std::make_shared<UdpSocket>(std::move(handle));
    // WSAEventSelect also makes the socket non-blocking.
    const bool complete =
        opened->readyEvent && opened->endEvent &&
        WSAEventSelect(opened->handle.get(), opened->readyEvent.get(), FD_READ | FD_WRITE) == 0;
    return complete ? opened : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

bool BindToAllAddresses(UdpSocket& socket, uint16_t port) {
    const std::lock_guard lock(socket.lock);
    const int reuse = 1;
    setsockopt(socket.handle.get(), SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reuse),
               sizeof reuse);
    const sockaddr_in address = MakeSystemAddress({INADDR_ANY, port});
    return bind(socket.handle.get(), reinterpret_cast<const sockaddr*>(&address), kAddressSize) == 0;
}

void RequestReceiveBuffer(UdpSocket& socket, int octets) {
    const std::lock_guard lock(socket.lock);
    setsockopt(socket.handle.get(), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&octets),
               sizeof octets);
}

ReceiveResult TryReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                                 Ipv4Endpoint* sender) {
    const std::lock_guard lock(socket.lock);
    if (!socket.handle) {
        return ReceiveResult::Closed;
    }
    sockaddr_in from{};
    int fromSize = kAddressSize;
    const int got = recvfrom(socket.handle.get(), reinterpret_cast<char*>(buffer), static_cast<int>(capacity),
                             0, reinterpret_cast<sockaddr*>(&from), &fromSize);
    const int error = got < 0 ? WSAGetLastError() : 0;
    if (got < 0 && error != WSAEMSGSIZE) {
        return ClassifyReceiveError(error);
    }
    // WSAEMSGSIZE: the datagram was truncated to the buffer's size; the sender is valid.
    *size = got < 0 ? capacity : static_cast<size_t>(got);
    *sender = {ntohl(from.sin_addr.s_addr), ntohs(from.sin_port)};
    return ReceiveResult::Datagram;
}

bool WaitForDatagram(UdpSocket& socket) {
    return WaitForReady(socket, INFINITE) != Wake::Refused;
}

void WaitForClose(UdpSocket& socket) {
    WaitForSingleObject(socket.endEvent.get(), INFINITE);
}

SendResult TrySendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets,
                           size_t size) {
    const sockaddr_in address = MakeSystemAddress(target);
    const std::lock_guard lock(socket.lock);
    if (!socket.handle) {
        return SendResult::Closed;
    }
    const int sent =
        sendto(socket.handle.get(), reinterpret_cast<const char*>(octets), static_cast<int>(size), 0,
               reinterpret_cast<const sockaddr*>(&address), kAddressSize);
    if (sent >= 0) {
        return SendResult::Sent;
    }
    const int error = WSAGetLastError();
    return error == WSAEWOULDBLOCK || error == WSAENOBUFS ? SendResult::BufferFull : SendResult::Failed;
}

bool WaitForSendBuffer(UdpSocket& socket) {
    // The system sets the event after a send failed with WSAEWOULDBLOCK, but not after WSAENOBUFS.
    constexpr DWORD kRetryInterval = 100;  // milliseconds
    return WaitForReady(socket, kRetryInterval) == Wake::Ready;
}

void EndWaiting(UdpSocket& socket) {
    SetEvent(socket.endEvent.get());
}

void CloseUdpSocket(UdpSocket& socket) {
    const std::lock_guard lock(socket.lock);
    socket.handle.Reset();
    EndWaiting(socket);
}

bool ParseIpv4Address(const std::string& text, uint32_t* address) {
    in_addr parsed{};
    // Only a result of 1 counts: inet_pton writes into `parsed` even when it rejects the text.
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) {
        return false;
    }
    *address = ntohl(parsed.s_addr);
    return true;
}
