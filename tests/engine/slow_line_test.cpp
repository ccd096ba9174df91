// Forwarding over lines slower than the receiver, and stops while it is blocked: no network may delay a stop,
// and a send that waits for buffer space loses nothing. scripts/with_slow_lines.sh creates the lines.
#include <atomic>
#include <chrono>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include "config/forwarding_settings.h"
#include "core/data_files.h"
#include "mib/name_store.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

constexpr wchar_t kSlowHost[] = L"10.77.1.2";
constexpr uint32_t kSlowAddress = 0x0A4D0102;
constexpr wchar_t kDeadNeighbour[] = L"10.77.1.3";
constexpr wchar_t kQuickHost[] = L"10.77.2.2";
constexpr wchar_t kUnreachable[] = L"203.0.113.1";  // no route
constexpr char kReceived[] = "Trap received (127.0.0.1).";
constexpr char kFailed[] = "Forwarding failed (sendto error).";

// 1,500 ms for each worker.
constexpr std::chrono::milliseconds kLongestStop(3000);

// Wine shows the host's files as drive Z.
#ifdef _WIN32
constexpr char kLineCounters[] = "Z:/proc/net/dev";
#else
constexpr char kLineCounters[] = "/proc/net/dev";
#endif

// Returns the octets sent over the line so far, -1 if there is no such line.
int64_t OctetsSent(const std::string& line) {
    std::ifstream counters(kLineCounters);
    for (std::string name; counters >> name;) {
        if (name == line + ":") {
            constexpr int kReceiveCounters = 8;
            int64_t value = -1;
            for (int column = 0; column <= kReceiveCounters; ++column) {
                counters >> value;
            }
            return value;
        }
    }
    return -1;
}

class Stops : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        ASSERT_TRUE(StartServer());
        ASSERT_TRUE(WaitForLogLines("Trap thread started (UDP 162)."));
    }

    static void ForwardTo(const wchar_t* host) { ReplaceForwarding(true, host, 9); }

    void Send(size_t count, const Octets& trap) {
        for (size_t sent = 0; sent < count; ++sent) {
            client_.Send(trap);
        }
    }

    // Makes the worker's next send wait: the slow line needs 15 seconds to free space in the buffer.
    static void FillSendBuffer() {
        const Octets large(60'000, 0x30);
        const Octets small(1, 0x30);
        for (const Octets& octets : {large, small}) {
            while (TrySendDatagram(*ServerState.forwardSocket, {kSlowAddress, 9}, octets.data(),
                                   octets.size()) == SendResult::Sent) {
            }
        }
    }

    // The limit is absolute, even on a slow machine: the window does not respond during a stop.
    static void ExpectStopInTime() {
        const auto begin = std::chrono::steady_clock::now();
        StopServer();
        const auto took = std::chrono::steady_clock::now() - begin;
        EXPECT_LE(std::chrono::duration_cast<std::chrono::milliseconds>(took), kLongestStop);
        EXPECT_EQ(LogLines().back(), "Server stopped.");
    }

    // The workers ended while the stop waited.
    static void ExpectWorkersEnded() {
        EXPECT_EQ(CountLogLines("Trap thread stopped."), 1U);
        EXPECT_EQ(CountLogLines("Listener thread stopped (UDP 161)."), 1U);
    }

    LoopbackClient client_;
};

class SlowLines : public Stops {
  protected:
    void SetUp() override {
        if (OctetsSent("slow") < 0) {
            GTEST_SKIP() << "slow lines need a private network (scripts/with_slow_lines.sh)";
        }
        Stops::SetUp();
    }
};

TEST_F(SlowLines, AFullSendBufferDoesNotDelayAStop) {
    ForwardTo(kSlowHost);
    Send(12, LargestMessage());
    ASSERT_TRUE(WaitForTraps(1));
    FillSendBuffer();
    ExpectStopInTime();
    ExpectWorkersEnded();
}

TEST_F(SlowLines, EachTrapUnsentAtAStopIsLogged) {
    ForwardTo(kSlowHost);
    FillSendBuffer();
    Send(8, Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    EXPECT_EQ(CountLogLines(kFailed), 0U) << "the send did not wait";
    ExpectStopInTime();
    ExpectWorkersEnded();
    std::vector<std::string> lines = LogLines();
    std::erase_if(lines, [](const std::string& line) { return line != kReceived && line != kFailed; });
    ASSERT_GE(lines.size(), 2U);
    for (size_t index = 0; index < lines.size(); ++index) {
        EXPECT_EQ(lines[index], index % 2 == 0 ? kReceived : kFailed) << index;
    }
}

TEST_F(SlowLines, ADeadNeighbourDoesNotDelayAStop) {
    ForwardTo(kDeadNeighbour);
    Send(400, Octets(1400, 0x30));
    ASSERT_TRUE(WaitForTraps(1));
    ExpectStopInTime();
    ExpectWorkersEnded();
}

TEST_F(SlowLines, AnUnreachableTargetIsLoggedForEachTrapAndDoesNotDelayAStop) {
    ForwardTo(kUnreachable);
    Send(50, Sample("v2_link_down"));
    ASSERT_TRUE(WaitForLogLines(kFailed, 50));
    ExpectStopInTime();
    ExpectWorkersEnded();
    EXPECT_EQ(CountLogLines(kFailed), 50U);
}

TEST_F(SlowLines, ALineThatIsFastEnoughLosesNothing) {
    const int64_t before = OctetsSent("quick");
    ForwardTo(kQuickHost);
    constexpr size_t kTraps = 40;
    const Octets trap = LargestMessage();
    Send(kTraps, trap);
    const auto all = static_cast<int64_t>(kTraps * trap.size());
    EXPECT_TRUE(WaitUntil([&] { return OctetsSent("quick") - before >= all; }))
        << OctetsSent("quick") - before;
    EXPECT_EQ(CountLogLines(kFailed), 0U);
}

// ---- Stops while a worker is busy with something else

TEST_F(Stops, AFloodDoesNotDelayAStop) {
    std::atomic<bool> end{false};
    std::thread flood([&] {
        LoopbackClient flooder;
        while (!end) {
            flooder.Send(Sample("v2_link_down"));
            flooder.Send({}, kListenerPort);
        }
    });
    EXPECT_TRUE(WaitForTraps(100));
    ExpectStopInTime();
    end = true;
    flood.join();
    ExpectWorkersEnded();
}

TEST_F(Stops, AWorkerThatWaitsForTheNameStoreDoesNotDelayAStop) {
    {
        const std::lock_guard lock(MibStoreLock);
        client_.Send(Sample("v2_link_down"));
        ASSERT_TRUE(WaitUntil([] { return ServerState.lastTrapTick != 0; }));
        ExpectStopInTime();
    }
    EXPECT_TRUE(WaitForLogLines("Trap thread stopped.")) << "the worker did not end by itself";
}

// As when SNMP.txt is on a drive that does not respond: FileLock is held meanwhile.
TEST_F(Stops, AStopWaitsForAFileThatBlocksForASecond) {
    std::atomic<bool> locked{false};
    std::thread hanging([&] {
        const std::lock_guard lock(FileLock);
        locked = true;
        std::this_thread::sleep_for(std::chrono::seconds(1));
    });
    EXPECT_TRUE(WaitUntil([&] { return locked.load(); }));
    client_.Send(Sample("v2_link_down"));
    ExpectStopInTime();
    hanging.join();
    ExpectWorkersEnded();
}

}  // namespace
