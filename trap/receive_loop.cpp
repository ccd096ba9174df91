#include "trap/receive_loop.h"

#include "platform/clock.h"
#include "trap/server_state.h"

namespace {

constexpr uint32_t kRetryDelay = 10;  // milliseconds

using DatagramHandler = std::function<void(size_t, const Ipv4Endpoint&)>;

void HandleGuarded(const DatagramHandler& handle, size_t size, const Ipv4Endpoint& sender) {
    try {
        handle(size, sender);
    } catch (...) {
        // Memory ran out or a lock failed: there is no place left to report it, and the next datagram may
        // fare better than a receiver that has ended.
    }
}

}  // namespace

void ReceiveWhileRunning(UdpSocket& socket, uint8_t* buffer, size_t capacity, const DatagramHandler& handle) {
    while (ServerState.running) {
        size_t size = 0;
        Ipv4Endpoint sender;
        switch (ReceiveDatagram(socket, buffer, capacity, &size, &sender)) {
            case ReceiveResult::Closed:
                return;
            case ReceiveResult::Failed:
                if (ServerState.running) {
                    SleepMilliseconds(kRetryDelay);
                }
                break;
            case ReceiveResult::Datagram:
                HandleGuarded(handle, size, sender);
                break;
        }
    }
}
