// Exceptions in the workers: memory runs out, or the system refuses a lock. The clock, which every log line
// reads, is replaced at link time and throws on demand in the next worker that reads it.
#include <atomic>
#include <new>
#include <system_error>
#include <thread>

#include "platform/clock.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"

namespace {

enum class Fault { None, NoMemory, RefusedLock };

// Thrown once, when a worker reads the clock; the first `readsToSkip` reads succeed.
std::atomic<Fault> nextFault{Fault::None};
std::atomic<int> readsToSkip{0};

// The first read for a trap is its time of arrival, before anything that can fail.
constexpr int kArrivalReads = 1;
const std::thread::id kMainThread = std::this_thread::get_id();

void ThrowNextFault() {
    if (std::this_thread::get_id() == kMainThread || nextFault == Fault::None || readsToSkip-- > 0) {
        return;
    }
    switch (nextFault.exchange(Fault::None)) {
        case Fault::NoMemory:
            throw std::bad_alloc();
        case Fault::RefusedLock:
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        case Fault::None:
            break;
    }
}

}  // namespace

LocalTime ReadLocalTime() {
    ThrowNextFault();
    return {2026, 3, 7, 9, 5, 2, 47};
}

uint64_t ReadTickCount() {
    return 1;
}

void SleepMilliseconds(uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

namespace {

constexpr char kOn161[] = "Datagram on UDP 161 from 127.0.0.1.";

class Exceptions : public EngineTest, public ::testing::WithParamInterface<Fault> {
  protected:
    static void StartAndWaitForBothWorkers() {
        ASSERT_TRUE(StartServer());
        ASSERT_TRUE(WaitForLogLines("Trap thread started (UDP 162)."));
        ASSERT_TRUE(WaitForLogLines("Listener thread started (UDP 161)."));
    }

    static void ThrowAfter(int reads) {
        readsToSkip = reads;
        nextFault = GetParam();
    }

    static bool WaitForFault() {
        return WaitUntil([] { return nextFault == Fault::None; });
    }

    void TearDown() override {
        nextFault = Fault::None;
        EngineTest::TearDown();
    }

    LoopbackClient client_;
};

TEST_P(Exceptions, WhileATrapIsLoggedLoseThatTrapOnly) {
    StartAndWaitForBothWorkers();
    ThrowAfter(kArrivalReads);
    client_.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForFault());
    client_.Send(Sample("v1_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    std::string expected = "       FROM: 127.0.0.1\r\r\n";
    expected += ExpectedLines("v1_link_down");
    EXPECT_EQ(TrapRecords().back(), expected);
    EXPECT_EQ(CountLogLines("Trap received (127.0.0.1)."), 1U);
}

TEST_P(Exceptions, WhileADatagramOn161IsLoggedLoseThatLineOnly) {
    StartAndWaitForBothWorkers();
    ThrowAfter(0);
    client_.Send({}, kListenerPort);
    ASSERT_TRUE(WaitForFault());
    client_.Send({}, kListenerPort);
    ASSERT_TRUE(WaitForLogLines(kOn161));
    client_.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(1)) << "the other worker was affected";
    EXPECT_EQ(CountLogLines(kOn161), 1U);
}

// A worker first reads the clock for its start line.
TEST_P(Exceptions, AtTheStartOfAWorkerLoseItsFirstLineOnly) {
    ThrowAfter(0);
    ASSERT_TRUE(StartServer());
    ASSERT_TRUE(WaitForFault());
    client_.Send(Sample("v2_link_down"));
    client_.Send({}, kListenerPort);
    EXPECT_TRUE(WaitForTraps(1));
    EXPECT_TRUE(WaitForLogLines(kOn161));
    EXPECT_EQ(
        CountLogLines("Trap thread started (UDP 162).") + CountLogLines("Listener thread started (UDP 161)."),
        1U);
}

INSTANTIATE_TEST_SUITE_P(Each, Exceptions, ::testing::Values(Fault::NoMemory, Fault::RefusedLock),
                         [](const ::testing::TestParamInfo<Fault>& fault) {
                             return fault.param == Fault::NoMemory ? "NoMemory" : "RefusedLock";
                         });

}  // namespace
