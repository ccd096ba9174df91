// Starting and stopping the receiver as a whole. GUI thread only. Both are safe in any state: starting a
// running receiver and stopping a stopped one do nothing and log nothing.
#pragma once

// What the main window wants to hear; null: nobody listens. Called on the GUI thread, with no lock held.
struct ServerHooks {
    void (*showRunning)(bool running) = nullptr;  // the button's text, before the last log line
    void (*repaint)() = nullptr;                  // the indicator, after it
};
extern ServerHooks ServerEvents;

// True: the receiver runs afterwards. False: it could not be started, the log says why, and nothing
// stays open.
bool StartServer();

// Closes the two ports and waits for the workers, at most 1500 ms each, the trap thread first. The traps that
// it holds are recorded and forwarded as far as the line takes them at once: no network can hold up a stop,
// and what it leaves unsent is a line in the log. A worker that takes longer is let go: it finishes what it
// holds, finds its sockets closed, says nothing more of what it could not forward, and ends. Only a file call
// that hangs under FileLock can make a stop longer, by as long as it hangs, since the stop writes its own
// lines there.
void StopServer();
