#include "trap/listener_thread.h"

#include <array>

#include "core/activity_log.h"
#include "trap/ipv4_text.h"
#include "trap/receive_loop.h"

namespace {

constexpr size_t kBufferSize = 4096;  // a longer datagram is cut; nobody looks at its content

void LogDatagrams(UdpSocket& socket) {
    std::array<uint8_t, kBufferSize> buffer;
    ReceiveWhileRunning(socket, buffer.data(), buffer.size(), [](size_t, const Ipv4Endpoint& sender) {
        std::wstring message = L"Datagram on UDP 161 from ";
        AppendIpv4Text(message, sender.address);
        LogMessage(message.append(L"."));
    });
}

}  // namespace

void ListenerThread(UdpSocket& listenerSocket) {
    LogMessage(L"Listener thread started (UDP 161).");
    try {
        LogDatagrams(listenerSocket);
    } catch (...) {
        // As in TrapThread: this thread ends, everything else goes on.
    }
    LogMessage(L"Listener thread stopped (UDP 161).");
}
