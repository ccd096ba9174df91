#include "tests/support/exclusive_port.h"

// Uses the system's sockets, since the program's own always set address reuse.
#ifdef _WIN32
#include "platform/windows/windows_headers.h"
#else
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

void CloseNative(uintptr_t handle) {
#ifdef _WIN32
    closesocket(handle);
#else
    close(static_cast<int>(handle));
#endif
}

}  // namespace

ExclusivePort::ExclusivePort(uint16_t port)
    : socket_(static_cast<uintptr_t>(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP))) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
#ifdef _WIN32
    const SOCKET handle = socket_;
#else
    const int handle = static_cast<int>(socket_);
#endif
    bound_ = bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

ExclusivePort::~ExclusivePort() {
    CloseNative(socket_);
}
