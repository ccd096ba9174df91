// A worker thread that can be waited for with a time limit.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

struct WorkerThread;  // owns the system's thread handle; defined for each system
struct WorkerThreadCloser {
    void operator()(WorkerThread* thread) const;  // closes the handle; the thread keeps running
};
using WorkerThreadHandle = std::unique_ptr<WorkerThread, WorkerThreadCloser>;

// Runs `body`, which must not throw, on a new thread. Returns null if the system refuses to create one. May
// throw std::bad_alloc; no thread was created then.
WorkerThreadHandle StartWorkerThread(std::function<void()> body);

// True: the thread has ended, and its writes are visible to the caller. False: it is still running after
// `milliseconds`.
bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds);
