#include "trap/trap_thread.h"

#include "core/activity_log.h"
#include "core/run_guarded.h"
#include "trap/receive_loop.h"
#include "trap/trap_batch.h"

void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket) noexcept {
    LogMessage(L"Trap thread started (UDP 162).");
    RunGuarded([&] {
        TrapBatch batch(forwardSocket);
        ReceiveWhileRunning(trapSocket, batch);
    });
    LogMessage(L"Trap thread stopped.");
}
