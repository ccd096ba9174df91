// What a worker thread asks of the system, and a system that gives none: its calls are replaced by linking
// with ones that note them, hence a program of its own. Unless a test wants otherwise the real ones follow.
#include <gtest/gtest.h>

#include <bit>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/thread.h"
#include "platform/windows/windows_headers.h"

namespace {

using Calls = std::vector<std::string>;

// The system as one test wants it, and what was asked of it.
struct System {
    bool isWatched = false;
    bool refusesThreads = false;
    bool answersWaits = false;
    DWORD waitAnswer = WAIT_OBJECT_0;
    HANDLE thread = nullptr;
    Calls calls;
} wanted;

template <typename Function>
Function RealFunction(const char* name) {
    return std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

HANDLE WINAPI SeeCreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                              LPVOID parameter, DWORD flags, LPDWORD id) {
    static const auto real = RealFunction<decltype(&CreateThread)>("CreateThread");
    if (!wanted.isWatched) {
        return real(security, stack, start, parameter, flags, id);
    }
    wanted.calls.push_back("CreateThread " + std::to_string(stack) + " " + std::to_string(flags));
    wanted.thread = wanted.refusesThreads ? nullptr : real(security, stack, start, parameter, flags, id);
    return wanted.thread;
}

DWORD WINAPI SeeWait(HANDLE handle, DWORD milliseconds) {
    static const auto real = RealFunction<decltype(&WaitForSingleObject)>("WaitForSingleObject");
    if (!wanted.isWatched || handle != wanted.thread) {
        return real(handle, milliseconds);
    }
    wanted.calls.push_back("wait " + std::to_string(milliseconds));
    return wanted.answersWaits ? wanted.waitAnswer : real(handle, milliseconds);
}

BOOL WINAPI SeeCloseHandle(HANDLE handle) {
    if (wanted.isWatched && (handle == wanted.thread || handle == nullptr)) {
        wanted.calls.push_back(handle ? "CloseHandle" : "CloseHandle of none");
    }
    static const auto real = RealFunction<decltype(&CloseHandle)>("CloseHandle");
    return real(handle);
}

}  // namespace

// What a call of an imported function goes through; the linker takes these before the import library's.
extern "C" {
decltype(&CreateThread) __imp_CreateThread = SeeCreateThread;
decltype(&WaitForSingleObject) __imp_WaitForSingleObject = SeeWait;
decltype(&CloseHandle) __imp_CloseHandle = SeeCloseHandle;
}

namespace {

constexpr uint32_t kLongWait = 60'000;

class WorkerThreads : public testing::Test {
  protected:
    WorkerThreads() {
        wanted = {};
        wanted.isWatched = true;
    }
    ~WorkerThreads() override { wanted = {}; }

    static Calls TakeCalls() { return std::exchange(wanted.calls, {}); }

    // Held by a body as long as that exists.
    const std::shared_ptr<int> owned_ = std::make_shared<int>(0);
};

TEST_F(WorkerThreads, RunTheirBodyOnceOnTheProgramsStackAndGiveItBack) {
    WorkerThreadHandle worker = StartWorkerThread([owned = owned_] { ++*owned; });
    ASSERT_TRUE(worker);
    EXPECT_EQ(TakeCalls(), Calls{"CreateThread 0 0"});
    EXPECT_TRUE(WaitForWorkerThread(*worker, kLongWait));
    EXPECT_EQ(TakeCalls(), Calls{"wait 60000"});
    EXPECT_EQ(*owned_, 1);
    EXPECT_EQ(owned_.use_count(), 1) << "the body is gone with its thread";
    worker.reset();
    EXPECT_EQ(TakeCalls(), Calls{"CloseHandle"});
}

TEST_F(WorkerThreads, AreNoneWhenTheSystemRefusesAndTheBodyIsGone) {
    wanted.refusesThreads = true;
    EXPECT_FALSE(StartWorkerThread([owned = owned_] { ++*owned; }));
    EXPECT_EQ(TakeCalls(), Calls{"CreateThread 0 0"}) << "nothing to close";
    EXPECT_EQ(*owned_, 0);
    EXPECT_EQ(owned_.use_count(), 1);
}

TEST_F(WorkerThreads, AreWaitedForNoLongerThanAsked) {
    std::promise<void> end;
    const WorkerThreadHandle worker = StartWorkerThread([&end] { end.get_future().wait(); });
    ASSERT_TRUE(worker);
    EXPECT_FALSE(WaitForWorkerThread(*worker, 1));
    end.set_value();
    EXPECT_TRUE(WaitForWorkerThread(*worker, kLongWait));
}

TEST_F(WorkerThreads, HaveNotEndedWhenTheWaitFails) {
    const WorkerThreadHandle worker = StartWorkerThread([] {});
    ASSERT_TRUE(worker);
    EXPECT_TRUE(WaitForWorkerThread(*worker, kLongWait));
    wanted.answersWaits = true;
    for (const DWORD answer : {DWORD{WAIT_TIMEOUT}, DWORD{WAIT_FAILED}, DWORD{WAIT_ABANDONED}}) {
        wanted.waitAnswer = answer;
        EXPECT_FALSE(WaitForWorkerThread(*worker, 1)) << answer;
    }
}

}  // namespace
