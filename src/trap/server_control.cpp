#include "trap/server_control.h"

#include <new>

#include "core/activity_log.h"
#include "trap/listener_thread.h"
#include "trap/server_state.h"
#include "trap/trap_thread.h"

ServerHooks ServerEvents;

namespace {

constexpr uint16_t kTrapPort = 162;
constexpr uint16_t kListenerPort = 161;
constexpr int kTrapReceiveBuffer = 32 * 1024 * 1024;  // octets; a burst queues up in it
constexpr uint32_t kLongestWait = 1500;               // milliseconds, for each worker

void CloseSocketField(UdpSocketRef* socket) {
    if (*socket) {
        CloseUdpSocket(**socket);
        socket->reset();
    }
}

// True: *socket is a new socket bound to `port` on all addresses. False: *socket is null.
bool BindUdpSocket(UdpSocketRef* socket, uint16_t port) {
    *socket = OpenUdpSocket();
    if (*socket && !BindToAllAddresses(**socket, port)) {
        CloseSocketField(socket);
    }
    return *socket != nullptr;
}

void WaitForWorker(WorkerThreadHandle* worker) {
    if (*worker) {
        WaitForWorkerThread(**worker, kLongestWait);
        worker->reset();
    }
}

void ShowRunning(bool running) {
    if (ServerEvents.showRunning != nullptr) {
        ServerEvents.showRunning(running);
    }
}

void RequestRepaint() {
    if (ServerEvents.repaint != nullptr) {
        ServerEvents.repaint();
    }
}

// If UDP 161 cannot be bound, that is only a warning.
bool OpenSockets() {
    ServerState.forwardSocket = OpenUdpSocket();
    if (!ServerState.forwardSocket) {
        LogMessage(L"Failed to create forwarding socket.");
        return false;
    }
    if (!BindUdpSocket(&ServerState.trapSocket, kTrapPort)) {
        LogMessage(L"Bind failed on UDP 162 (Traps). Run as admin or free the port.");
        CloseSocketField(&ServerState.forwardSocket);
        return false;
    }
    RequestReceiveBuffer(*ServerState.trapSocket, kTrapReceiveBuffer);
    if (!BindUdpSocket(&ServerState.listenerSocket, kListenerPort)) {
        LogMessage(L"Warning: bind failed on UDP 161 (SNMP). Continuing with 162 only.");
    }
    return true;
}

// Returns null if memory runs out or the system refuses to create a thread.
template <typename Body>
WorkerThreadHandle StartWorker(const Body& body) {
    try {
        return StartWorkerThread(body);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// Each worker owns references to its sockets, which therefore outlive it.
bool StartTrapWorker() {
    ServerState.trapThreadHandle =
        StartWorker([trap = ServerState.trapSocket, forward = ServerState.forwardSocket] {
            TrapThread(*trap, forward.get());
        });
    return ServerState.trapThreadHandle != nullptr;
}

void StartListenerWorker() {
    ServerState.listenerThreadHandle =
        StartWorker([listener = ServerState.listenerSocket] { ListenerThread(*listener); });
    if (!ServerState.listenerThreadHandle) {
        LogMessage(L"Failed to create UDP161 thread. Continuing.");
    }
}

}  // namespace

bool StartServer() {
    if (ServerState.running) {
        return true;
    }
    LogMessage(L"Starting server...");
    if (!OpenSockets()) {
        return false;
    }
    ServerState.running.exchange(true);  // before the workers start, because their loops check it
    if (!StartTrapWorker()) {
        LogMessage(L"Failed to create trap thread.");
        StopServer();
        return false;
    }
    if (ServerState.listenerSocket) {
        StartListenerWorker();
    }
    ShowRunning(true);
    LogMessage(L"Server started.");
    RequestRepaint();
    return true;
}

void StopServer() {
    if (!ServerState.running.exchange(false)) {
        return;
    }
    LogMessage(L"Stopping server...");
    CloseSocketField(&ServerState.trapSocket);
    CloseSocketField(&ServerState.listenerSocket);
    // Traps that were received are still forwarded, but without waiting for the send buffer.
    EndWaiting(*ServerState.forwardSocket);
    WaitForWorker(&ServerState.trapThreadHandle);
    WaitForWorker(&ServerState.listenerThreadHandle);
    CloseSocketField(&ServerState.forwardSocket);
    ShowRunning(false);
    LogMessage(L"Server stopped.");
    RequestRepaint();
}
