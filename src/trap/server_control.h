// Starts and stops the receiver. GUI thread only. Starting a running receiver and stopping a stopped one are
// no-ops and log nothing.
#pragma once

// Callbacks of the main window; null ones are not called. They are called on the GUI thread with no lock
// held.
struct ServerHooks {
    void (*showRunning)(bool running) = nullptr;  // sets the button's text; before the last log line
    void (*repaint)() = nullptr;                  // repaints the indicator; after the last log line
};
extern ServerHooks ServerEvents;

// Starts the receiver. True: it is running. False: it could not be started; the log says why, and no socket
// is left open.
bool StartServer();

// Stops the receiver: closes both ports and waits up to 1500 ms for each worker, the trap thread first. Traps
// that were received before are still recorded, logged and forwarded, with one send attempt each, so a slow
// network cannot delay the stop. A trap that cannot be sent gets its failure line.
//
// A worker that takes longer is abandoned: it finishes its batch without logging further forwarding failures,
// finds its sockets closed, and ends. The stop writes to log.txt under FileLock, so it takes longer than
// these waits only if a file operation hangs, its own or another thread's.
void StopServer();
