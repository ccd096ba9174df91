#include "platform/thread.h"

#include <utility>

#include "platform/windows/scoped_handle.h"

struct WorkerThread {
    explicit WorkerThread(HANDLE thread) : handle(thread) {}
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
    HANDLE handle = CreateThread(nullptr, 0, RunBody, ownedBody.get(), 0, nullptr);
    if (handle == nullptr) {
        return nullptr;
    }
    static_cast<void>(ownedBody.release());  // the new thread owns it from here on
    return WorkerThreadHandle(new WorkerThread(handle));
}

bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds) {
    return WaitForSingleObject(thread.handle.get(), milliseconds) == WAIT_OBJECT_0;
}
