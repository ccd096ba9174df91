// Starting and stopping the receiver as a whole. GUI thread only. Both are safe in any state: starting a
// running receiver and stopping a stopped one do nothing and log nothing.
#pragma once

// Set by the main window; null: not called. Called on the GUI thread, with no lock held.
struct ServerHooks {
    void (*showRunning)(bool running) = nullptr;  // the button's text, before the last log line
    void (*repaint)() = nullptr;                  // the indicator, after it
};
extern ServerHooks ServerEvents;

// True: the receiver runs afterwards. False: it could not be started, the log says why, and nothing
// stays open.
bool StartServer();

// Closes the two ports and waits for the workers, at most 1500 ms each, the trap thread first. Traps received
// before are still recorded, announced and sent, each with one attempt, so no network can delay a stop; a
// trap that cannot be sent has its failure line. A worker that takes longer is no longer waited for: it
// finishes its batch, finds its sockets closed, logs no more failures to forward, and ends. Only a file call
// that hangs under FileLock can make a stop longer, since the stop writes its own lines to log.txt.
void StopServer();
