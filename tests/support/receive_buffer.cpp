#include "tests/support/receive_buffer.h"

#ifdef _WIN32
#include "platform/windows/windows_headers.h"
#else
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

#ifdef _WIN32
using Socket = SOCKET;
constexpr Socket kNoSocket = INVALID_SOCKET;
using OptionSize = int;
#else
using Socket = int;
constexpr Socket kNoSocket = -1;
using OptionSize = socklen_t;
int closesocket(int socket) {
    return close(socket);
}
#endif

int Grant(const int* wanted) {
    const Socket socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    if (socket == kNoSocket) {
        return 0;
    }
    if (wanted != nullptr) {
        setsockopt(socket, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(wanted), sizeof *wanted);
    }
    int granted = 0;
    OptionSize size = sizeof granted;
    getsockopt(socket, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<char*>(&granted), &size);
    closesocket(socket);
    return granted;
}

}  // namespace

int GrantedReceiveBuffer(int octets) {
    return Grant(&octets);
}

int DefaultReceiveBuffer() {
    return Grant(nullptr);
}
