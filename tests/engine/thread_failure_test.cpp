// A system that has no thread left to give. The thread seam is replaced by linking: this file answers for it.
#include <climits>
#include <thread>
#include <utility>

#include "platform/thread.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

struct WorkerThread {
    std::thread thread;
};

namespace {

int threadsLeft = INT_MAX;

}  // namespace

void WorkerThreadCloser::operator()(WorkerThread* thread) const {
    thread->thread.join();
    delete thread;
}

WorkerThreadHandle StartWorkerThread(std::function<void()> body) {
    return WorkerThreadHandle(threadsLeft-- > 0 ? new WorkerThread{std::thread(std::move(body))} : nullptr);
}

bool WaitForWorkerThread(WorkerThread&, uint32_t) {
    return true;  // the closer joins
}

namespace {

using Lines = std::vector<std::string>;

class ThreadFailure : public EngineTest {
  protected:
    void TearDown() override {
        EngineTest::TearDown();
        threadsLeft = INT_MAX;
    }
};

TEST_F(ThreadFailure, WithoutATrapThreadTheStartIsTakenBack) {
    threadsLeft = 0;
    EXPECT_FALSE(StartServer());
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(ServerState.trapSocket, nullptr);
    EXPECT_EQ(ServerState.listenerSocket, nullptr);
    EXPECT_EQ(ServerState.forwardSocket, nullptr);
    EXPECT_EQ(LogLines(), (Lines{"Starting server...", "Failed to create trap thread.", "Stopping server...",
                                 "Server stopped."}));
}

TEST_F(ThreadFailure, WithoutAListenerThreadTrapsAreReceivedAllTheSame) {
    threadsLeft = 1;
    ASSERT_TRUE(StartServer());
    EXPECT_NE(ServerState.listenerSocket, nullptr) << "161 stays bound, though nobody reads it";
    EXPECT_EQ(CountLogLines("Failed to create UDP161 thread. Continuing."), 1U);
    LoopbackClient().Send(Sample("v2_link_down"));
    EXPECT_TRUE(WaitForTraps(1));
    StopServer();
    EXPECT_EQ(CountLogLines("Server stopped."), 1U);
}

}  // namespace
