#include "platform/udp_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <mutex>
#include <new>
#include <utility>

#include "platform/posix/scoped_descriptor.h"

// On POSIX, closing a descriptor does not wake a thread that waits on it, so each socket has an end event.
struct UdpSocket {
    UdpSocket(ScopedDescriptor socket, ScopedDescriptor event)
        : descriptor(std::move(socket)), endEvent(std::move(event)) {}

    std::mutex lock;              // guards `descriptor` while one non-blocking call uses it
    ScopedDescriptor descriptor;  // reset by CloseUdpSocket
    ScopedDescriptor endEvent;    // readable once waiting has ended
};

namespace {

sockaddr_in MakeSystemAddress(const Ipv4Endpoint& endpoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(endpoint.address);
    return address;
}

enum class Wake { Ready, Ended, Refused };

Wake WaitForReady(UdpSocket& socket, short event) {
    pollfd waits[2] = {{-1, event, 0}, {socket.endEvent.get(), POLLIN, 0}};
    {
        const std::lock_guard lock(socket.lock);
        // If the descriptor is closed after this and its number is reused, poll returns early at worst.
        waits[0].fd = socket.descriptor.get();
    }
    if (poll(waits, 2, -1) < 0 && errno != EINTR) {
        return Wake::Refused;
    }
    return waits[1].revents != 0 ? Wake::Ended : Wake::Ready;
}

}  // namespace

bool StartSocketLibrary() {
    return true;
}

void StopSocketLibrary() {}

UdpSocketRef OpenUdpSocket() try {
    ScopedDescriptor descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
    ScopedDescriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!descriptor || !event) {
        return nullptr;
    }
    return std::make_shared<UdpSocket>(std::move(descriptor), std::move(event));
} catch (const std::bad_alloc&) {
    return nullptr;
}

bool BindToAllAddresses(UdpSocket& socket, uint16_t port) {
    const std::lock_guard lock(socket.lock);
    const int reuse = 1;
    setsockopt(socket.descriptor.get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    const sockaddr_in address = MakeSystemAddress({INADDR_ANY, port});
    return bind(socket.descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void RequestReceiveBuffer(UdpSocket& socket, int octets) {
    const std::lock_guard lock(socket.lock);
    setsockopt(socket.descriptor.get(), SOL_SOCKET, SO_RCVBUF, &octets, sizeof octets);
}

ReceiveResult TryReceiveDatagram(UdpSocket& socket, uint8_t* buffer, size_t capacity, size_t* size,
                                 Ipv4Endpoint* sender) {
    const std::lock_guard lock(socket.lock);
    if (!socket.descriptor) {
        return ReceiveResult::Closed;
    }
    sockaddr_in from{};
    socklen_t fromSize = sizeof from;
    const ssize_t got = recvfrom(socket.descriptor.get(), buffer, capacity, MSG_DONTWAIT,
                                 reinterpret_cast<sockaddr*>(&from), &fromSize);
    if (got < 0) {
        return errno == EAGAIN ? ReceiveResult::NothingQueued : ReceiveResult::Failed;
    }
    *size = static_cast<size_t>(got);
    *sender = {ntohl(from.sin_addr.s_addr), ntohs(from.sin_port)};
    return ReceiveResult::Datagram;
}

bool WaitForDatagram(UdpSocket& socket) {
    return WaitForReady(socket, POLLIN) != Wake::Refused;
}

void WaitForClose(UdpSocket& socket) {
    pollfd end{socket.endEvent.get(), POLLIN, 0};
    while (poll(&end, 1, -1) < 0 && errno == EINTR) {
    }
}

SendResult TrySendDatagram(UdpSocket& socket, const Ipv4Endpoint& target, const uint8_t* octets,
                           size_t size) {
    const sockaddr_in address = MakeSystemAddress(target);
    const std::lock_guard lock(socket.lock);
    if (!socket.descriptor) {
        return SendResult::Closed;
    }
    const ssize_t sent = sendto(socket.descriptor.get(), octets, size, MSG_DONTWAIT,
                                reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (sent >= 0) {
        return SendResult::Sent;
    }
    return errno == EAGAIN ? SendResult::BufferFull : SendResult::Failed;
}

bool WaitForSendBuffer(UdpSocket& socket) {
    return WaitForReady(socket, POLLOUT) == Wake::Ready;
}

void EndWaiting(UdpSocket& socket) {
    eventfd_write(socket.endEvent.get(), 1);
}

void CloseUdpSocket(UdpSocket& socket) {
    const std::lock_guard lock(socket.lock);
    socket.descriptor.Reset();
    EndWaiting(socket);
}

bool ParseIpv4Address(const std::string& text, uint32_t* address) {
    in_addr parsed{};
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) {
        return false;
    }
    *address = ntohl(parsed.s_addr);
    return true;
}
