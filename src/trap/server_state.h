// The state of the receiver as a whole. Start and stop (trap/server_control.h) change it; the workers and the
// windows look at the fields that concern them.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/thread.h"
#include "platform/udp_socket.h"

struct ServerStateFields {
    std::atomic<bool> running{false};  // GUI thread exchanges; both workers and the windows load.

    // GUI thread only. Each worker is handed its own references when it starts and never looks here, so a
    // worker that outlives its stop cannot find the sockets of the next run. Null: closed.
    UdpSocketRef trapSocket;      // bound to UDP 162
    UdpSocketRef listenerSocket;  // bound to UDP 161, or null when that port was taken
    UdpSocketRef forwardSocket;   // unbound
    WorkerThreadHandle trapThreadHandle;
    WorkerThreadHandle listenerThreadHandle;

    // The last datagram on 162, kept over stops and starts: ReadTickCount at its arrival (0: none yet), which
    // the trap thread exchanges, and its sender.
    std::atomic<uint64_t> lastTrapTick{0};
    std::wstring lastTrapSender;  // "10.1.2.3:49152". Trap thread replaces; under LastTrapSenderLock.
};
extern ServerStateFields ServerState;

// Held for one copy or one assignment of lastTrapSender; nothing is called under it.
extern std::mutex LastTrapSenderLock;

std::wstring CopyLastTrapSender();
void ReplaceLastTrapSender(std::wstring_view sender);
