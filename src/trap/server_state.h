// The state of the receiver. StartServer and StopServer change it, except the last trap, which the trap
// thread sets.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/thread.h"
#include "platform/udp_socket.h"

struct ServerStateFields {
    std::atomic<bool> running{false};  // GUI thread sets and clears; all threads read.

    // GUI thread only; null: closed. Workers get their own references when they start and never read these,
    // so a worker that is still running after a stop cannot use the sockets of the next run.
    UdpSocketRef trapSocket;      // bound to UDP 162
    UdpSocketRef listenerSocket;  // bound to UDP 161, or null when that port is in use
    UdpSocketRef forwardSocket;   // unbound
    WorkerThreadHandle trapThreadHandle;
    WorkerThreadHandle listenerThreadHandle;

    // The last datagram on UDP 162. The trap thread writes both; a stop or start does not reset them.
    std::atomic<uint64_t> lastTrapTick{0};  // ReadTickCount() when it was processed; 0: none yet
    std::wstring lastTrapSender;            // "10.1.2.3:49152"; guarded by LastTrapSenderLock
};
extern ServerStateFields ServerState;

// Guards lastTrapSender. Locked for one copy or one assignment; nothing else is called while it is held.
extern std::mutex LastTrapSenderLock;

// Returns lastTrapSender. Locks LastTrapSenderLock. May throw std::bad_alloc.
std::wstring CopyLastTrapSender();

// Sets lastTrapTick to the current tick and lastTrapSender to `sender` as text. If memory runs out, the
// previous sender remains. Locks LastTrapSenderLock. Throws nothing. Trap thread only.
void SetLastTrap(const Ipv4Endpoint& sender) noexcept;
