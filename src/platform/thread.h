// A worker thread that is waited for with a limit, and let go of when it takes longer.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

struct WorkerThread;  // owns the system's thread handle; defined behind the seam
struct WorkerThreadCloser {
    void operator()(WorkerThread* thread) const;  // closes the handle; the thread itself goes on
};
using WorkerThreadHandle = std::unique_ptr<WorkerThread, WorkerThreadCloser>;

// Runs `body` on a new thread. Null: the system made no thread. May throw std::bad_alloc before there is one.
// `body` must not throw.
WorkerThreadHandle StartWorkerThread(std::function<void()> body);

// True: the thread has ended, and what it wrote is visible here. False: it still ran after `milliseconds`.
bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds);
