#include "platform/thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace {

struct EndSignal {
    std::mutex lock;
    std::condition_variable changed;
    bool ended = false;
};

void RunBody(const std::function<void()>& body, EndSignal& signal) {
    body();
    const std::lock_guard lock(signal.lock);
    signal.ended = true;
    signal.changed.notify_all();
}

}  // namespace

struct WorkerThread {
    std::shared_ptr<EndSignal> signal = std::make_shared<EndSignal>();
    std::thread thread;
};

void WorkerThreadCloser::operator()(WorkerThread* thread) const {
    // Join a thread that has signalled its end, so that nothing of it is left at exit.
    if (WaitForWorkerThread(*thread, 0)) {
        thread->thread.join();
    } else {
        thread->thread.detach();
    }
    delete thread;
}

WorkerThreadHandle StartWorkerThread(std::function<void()> body) {
    auto worker = std::make_unique<WorkerThread>();
    try {
        worker->thread =
            std::thread([body = std::move(body), signal = worker->signal] { RunBody(body, *signal); });
    } catch (const std::system_error&) {
        return nullptr;
    }
    return WorkerThreadHandle(worker.release());
}

bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds) {
    std::unique_lock lock(thread.signal->lock);
    return thread.signal->changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                           [&] { return thread.signal->ended; });
}
