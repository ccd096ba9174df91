#include "platform/udp_socket.h"

#include <mutex>
#include <new>
#include <utility>

#include "platform/windows/scoped_handle.h"

namespace {

class ScopedSocket {
  public:
    explicit ScopedSocket(SOCKET handle) : handle_(handle) {}
    ScopedSocket(ScopedSocket&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_SOCKET)) {}
    ScopedSocket& operator=(ScopedSocket&&) = delete;
    ScopedSocket(const ScopedSocket&) = delete;
    ScopedSocket& operator=(const ScopedSocket&) = delete;
    ~ScopedSocket() { Reset(); }

    SOCKET get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_SOCKET; }

    void Reset() {
        if (*this) {
            closesocket(std::exchange(handle_, INVALID_SOCKET));
        }
    }

  private:
    SOCKET handle_;
};

// The system's own lock, which needs no memory and no handle and so cannot fail: a std::mutex here can, in
// its first or its first contended use, and a stop that throws half-way would leave a socket open for ever.
// Named as std::lock_guard wants it.
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

    // Set by the system when a datagram waits; resets itself when waited for.
    const ScopedHandle arrivedEvent{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    // Set from the close on.
    const ScopedHandle closedEvent{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

namespace {

constexpr int kAddressSize = static_cast<int>(sizeof(sockaddr_in));

enum class Attempt { Received, NothingThere, Closed, Failed };

sockaddr_in MakeSystemAddress(const Ipv4Endpoint& endpoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(endpoint.address);
    return address;
}

Attempt SortReceiveError(int error) {
    switch (error) {
        case WSAEWOULDBLOCK:
            return Attempt::NothingThere;
        case WSAEINTR:
        case WSAENOTSOCK:
            return Attempt::Closed;
        default:
            return Attempt::Failed;
    }
}

Attempt TryReceive(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size, sockaddr_in* sender) {
    const std::lock_guard lock(socket.lock);
    if (!socket.handle) {
        return Attempt::Closed;
    }
    int senderSize = kAddressSize;
    const int got = recvfrom(socket.handle.get(), reinterpret_cast<char*>(buffer), static_cast<int>(capacity),
                             0, reinterpret_cast<sockaddr*>(sender), &senderSize);
    if (got >= 0) {
        *size = static_cast<size_t>(got);
        return Attempt::Received;
    }
    const int error = WSAGetLastError();
    if (error == WSAEMSGSIZE) {
        // The buffer is full of the datagram's start and the sender is known: a long datagram is one all
        // the same.
        *size = capacity;
        return Attempt::Received;
    }
    return SortReceiveError(error);
}

// False: the system refused to wait.
bool WaitForDatagramOrClose(const UdpSocket& socket) {
    const HANDLE waits[] = {socket.closedEvent.get(), socket.arrivedEvent.get()};
    return WaitForMultipleObjects(2, waits, FALSE, INFINITE) != WAIT_FAILED;
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
    auto opened = std::make_shared<UdpSocket>(std::move(handle));
    const bool complete = opened->arrivedEvent && opened->closedEvent;
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
    // Selecting events makes the socket non-blocking; one that only sends is better off waiting for its turn,
    // so this happens only here, where a socket becomes one that receives.
    return bind(socket.handle.get(), reinterpret_cast<const sockaddr*>(&address), kAddressSize) == 0 &&
           WSAEventSelect(socket.handle.get(), socket.arrivedEvent.get(), FD_READ) == 0;
}

void RequestReceiveBuffer(UdpSocket& socket, int octets) {
    const std::lock_guard lock(socket.lock);
    setsockopt(socket.handle.get(), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&octets),
               sizeof octets);
}

int QueryReceiveBuffer(UdpSocket& socket) {
    const std::lock_guard lock(socket.lock);
    int octets = 0;
    int size = sizeof octets;
    getsockopt(socket.handle.get(), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<char*>(&octets), &size);
    return octets;
}

ReceiveResult ReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                              Ipv4Endpoint* sender) {
    for (;;) {
        sockaddr_in from{};
        switch (TryReceive(socket, buffer, capacity, size, &from)) {
            case Attempt::Received:
                *sender = {ntohl(from.sin_addr.s_addr), ntohs(from.sin_port)};
                return ReceiveResult::Datagram;
            case Attempt::Closed:
                return ReceiveResult::Closed;
            case Attempt::Failed:
                return ReceiveResult::Failed;
            case Attempt::NothingThere:
                break;
        }
        if (!WaitForDatagramOrClose(socket)) {
            return ReceiveResult::Failed;
        }
    }
}

SendResult SendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets, size_t size) {
    const sockaddr_in address = MakeSystemAddress(target);
    const std::lock_guard lock(socket.lock);
    if (!socket.handle) {
        return SendResult::Closed;
    }
    const int sent =
        sendto(socket.handle.get(), reinterpret_cast<const char*>(octets), static_cast<int>(size), 0,
               reinterpret_cast<const sockaddr*>(&address), kAddressSize);
    return sent < 0 ? SendResult::Failed : SendResult::Sent;
}

void CloseUdpSocket(UdpSocket& socket) {
    const std::lock_guard lock(socket.lock);
    socket.handle.Reset();
    SetEvent(socket.closedEvent.get());
}

bool ParseIpv4Address(const std::string& text, uint32_t* address) {
    in_addr parsed{};
    // Only a result of 1 may be used: a refused text can have been written in part already.
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) {
        return false;
    }
    *address = ntohl(parsed.s_addr);
    return true;
}
