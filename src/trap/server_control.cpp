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
constexpr int kTrapReceiveBuffer = 32 * 1024 * 1024;  // octets: what may queue up in a burst
constexpr uint32_t kLongestWait = 1500;               // milliseconds, for each worker

void CloseSocketField(UdpSocketRef* socket) {
    if (*socket) {
        CloseUdpSocket(**socket);
        socket->reset();
    }
}

// True: *socket holds a socket bound to `port` on all addresses. False: *socket is null.
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

// A port 161 that is in use is a warning, not a failure.
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

// Null when out of memory, as when the system refuses a thread.
template <typename Body>
WorkerThreadHandle StartWorker(const Body& body) {
    try {
        return StartWorkerThread(body);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// Each worker has its own references, so its sockets live as long as it does.
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
    ServerState.running.exchange(true);  // before the workers start, so that they enter their loops
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
    // What the trap thread has received it still forwards, without waiting for a slow line.
    EndWaiting(*ServerState.forwardSocket);
    WaitForWorker(&ServerState.trapThreadHandle);
    WaitForWorker(&ServerState.listenerThreadHandle);
    CloseSocketField(&ServerState.forwardSocket);
    ShowRunning(false);
    LogMessage(L"Server stopped.");
    RequestRepaint();
}
