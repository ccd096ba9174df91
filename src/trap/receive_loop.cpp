#include "trap/receive_loop.h"

#include "platform/clock.h"
#include "trap/server_state.h"

namespace {

constexpr uint32_t kRetryDelay = 10;  // milliseconds

// Receives queued datagrams until the batch is full, at most one if `oneOnly`. Returns the result of the last
// attempt to receive.
ReceiveResult FillBatch(UdpSocket& socket, ReceiveBatch& batch, bool oneOnly) {
    while (ServerState.running) {
        const std::span<uint8_t> space = batch.FreeSpace();
        if (space.empty()) {
            break;
        }
        size_t count = 0;
        Ipv4Endpoint sender;
        const ReceiveResult result = TryReceiveDatagram(socket, space.data(), space.size(), &count, &sender);
        if (result != ReceiveResult::Datagram) {
            return result;
        }
        batch.AddArrival(count, sender);
        if (oneOnly) {
            break;
        }
    }
    return ReceiveResult::Datagram;
}

}  // namespace

void ReceiveWhileRunning(UdpSocket& socket, ReceiveBatch& batch) {
    bool socketWasEmpty = false;
    while (ServerState.running) {
        ReceiveResult result = FillBatch(socket, batch, socketWasEmpty);
        batch.Process();
        if (result == ReceiveResult::Closed) {
            return;
        }
        socketWasEmpty = result == ReceiveResult::NothingQueued;
        if (socketWasEmpty && !WaitForDatagram(socket)) {
            result = ReceiveResult::Failed;
        }
        if (result == ReceiveResult::Failed) {
            SleepMilliseconds(kRetryDelay);
        }
    }
    // A stop clears the flag, logs "Stopping server..." and closes the socket. What the worker logs next must
    // follow that line.
    WaitForClose(socket);
}
