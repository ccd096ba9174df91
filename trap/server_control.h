// Starting and stopping the receiver as a whole. GUI thread only. Both are safe in any state: starting a
// running receiver and stopping a stopped one do nothing and log nothing.
#pragma once

#include <cstdint>

#include "platform/udp_socket.h"

// What the main window wants to hear; null: nobody listens. Called on the GUI thread, with no lock held.
struct ServerHooks {
    void (*showRunning)(bool running) = nullptr;  // the button's text, before the last log line
    void (*repaint)() = nullptr;                  // the indicator, after it
};
extern ServerHooks ServerEvents;

// True: the receiver runs afterwards. False: it could not be started, the log says why, and nothing
// stays open.
bool StartServer();

// Closes the sockets and waits for the workers, at most 1500 ms each, the trap thread first. A worker that
// takes longer is let go: it finishes what it holds, finds its socket closed and ends.
void StopServer();

// True: *socket holds a socket bound to `port` on all addresses. False: *socket is null.
bool BindUdpSocket(UdpSocketRef* socket, uint16_t port);
