// The state of the receiver as a whole, changed by trap/server_control.h.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/thread.h"
#include "platform/udp_socket.h"

struct ServerStateFields {
    std::atomic<bool> running{false};  // GUI thread exchanges; both workers and the windows load.

    // GUI thread only. Each worker gets its own references when it starts and never reads these, so a worker
    // that outlives its stop cannot reach the sockets of the next run. Null: closed.
    UdpSocketRef trapSocket;      // bound to UDP 162
    UdpSocketRef listenerSocket;  // bound to UDP 161, or null when that port is in use
    UdpSocketRef forwardSocket;   // unbound
    WorkerThreadHandle trapThreadHandle;
    WorkerThreadHandle listenerThreadHandle;

    // The last datagram on 162, not reset by a stop or start: ReadTickCount at its arrival (0: none yet) and
    // its sender.
    std::atomic<uint64_t> lastTrapTick{0};
    std::wstring lastTrapSender;  // "10.1.2.3:49152". Trap thread replaces; under LastTrapSenderLock.
};
extern ServerStateFields ServerState;

// Locked for one copy or one assignment of lastTrapSender; nothing is called under it.
extern std::mutex LastTrapSenderLock;

std::wstring CopyLastTrapSender();

// Sets lastTrapTick to now and lastTrapSender to the text of `sender`. If memory runs out for the text, the
// older sender remains. Throws nothing. Trap thread.
void NoteLastTrap(const Ipv4Endpoint& sender) noexcept;
