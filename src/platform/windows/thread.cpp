#include "platform/thread.h"

#include <utility>

#include "platform/windows/scoped_handle.h"

struct WorkerThread {
    ScopedHandle handle;
};

namespace {

using ThreadBody = std::function<void()>;

DWORD WINAPI RunBody(void* parameter) {
    const std::unique_ptr<ThreadBody> body(static_cast<ThreadBody*>(parameter));
    (*body)();
    return 0;
}

}  // namespace

void WorkerThreadCloser::operator()(WorkerThread* thread) const {
    delete thread;
}

WorkerThreadHandle StartWorkerThread(std::function<void()> body) {
    auto ownedBody = std::make_unique<ThreadBody>(std::move(body));
    WorkerThreadHandle worker(new WorkerThread);
    worker->handle.Reset(CreateThread(nullptr, 0, RunBody, ownedBody.get(), 0, nullptr));
    if (!worker->handle) {
        return nullptr;
    }
    static_cast<void>(ownedBody.release());  // the new thread owns it now
    return worker;
}

bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds) {
    return WaitForSingleObject(thread.handle.get(), milliseconds) == WAIT_OBJECT_0;
}
