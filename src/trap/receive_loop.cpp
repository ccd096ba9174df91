#include "trap/receive_loop.h"

#include "core/run_guarded.h"
#include "platform/clock.h"
#include "trap/server_state.h"

namespace {

constexpr uint32_t kRetryDelay = 10;  // milliseconds

// The answer that ended the taking; Datagram: enough were taken.
ReceiveResult TakeWaiting(UdpSocket& socket, ReceiveTurn& turn, bool oneOnly) {
    for (std::span<uint8_t> room = turn.Room(); !room.empty(); room = turn.Room()) {
        size_t count = 0;
        Ipv4Endpoint sender;
        const ReceiveResult result = TakeDatagram(socket, room.data(), room.size(), &count, &sender);
        if (result != ReceiveResult::Datagram) {
            return result;
        }
        RunGuarded([&] { turn.Take(count, sender); });
        if (oneOnly) {
            break;
        }
    }
    return ReceiveResult::Datagram;
}

}  // namespace

void ReceiveWhileRunning(UdpSocket& socket, ReceiveTurn& turn, const std::function<void()>& work) {
    bool socketWasEmpty = false;
    while (ServerState.running) {
        ReceiveResult result = TakeWaiting(socket, turn, socketWasEmpty);
        RunGuarded(work);
        turn.Clear();
        if (result == ReceiveResult::Closed || !ServerState.running) {
            return;
        }
        socketWasEmpty = result == ReceiveResult::NothingThere;
        if (socketWasEmpty && !WaitForDatagram(socket)) {
            result = ReceiveResult::Failed;
        }
        if (result == ReceiveResult::Failed) {
            SleepMilliseconds(kRetryDelay);
        }
    }
}
