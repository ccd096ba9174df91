// Starting and stopping the receiver.
#include "trap/server_control.h"

#include <algorithm>
#include <mutex>
#include <optional>

#include "mib/name_store.h"
#include "tests/engine/engine_fixture.h"
#include "tests/support/exclusive_port.h"
#include "tests/support/lock_waits.h"
#include "trap/server_state.h"

namespace {

using Lines = std::vector<std::string>;

size_t IndexOf(const Lines& lines, const std::string& line) {
    return static_cast<size_t>(std::find(lines.begin(), lines.end(), line) - lines.begin());
}

// receiver_steps_test.cpp tests the order of the steps.
class ServerControl : public EngineTest {};

TEST_F(ServerControl, StartOpensThreeSocketsAndStartsTwoThreadsAndLogsEachStep) {
    ASSERT_TRUE(StartServer());
    EXPECT_TRUE(ServerState.running);
    EXPECT_NE(ServerState.trapSocket, nullptr);
    EXPECT_NE(ServerState.listenerSocket, nullptr);
    EXPECT_NE(ServerState.forwardSocket, nullptr);
    EXPECT_NE(ServerState.trapThreadHandle, nullptr);
    EXPECT_NE(ServerState.listenerThreadHandle, nullptr);
    ASSERT_TRUE(WaitForLogLines("Trap thread started (UDP 162)."));
    ASSERT_TRUE(WaitForLogLines("Listener thread started (UDP 161)."));
    Lines lines = LogLines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines.front(), "Starting server...");
    EXPECT_EQ(CountLogLines("Server started."), 1U);
}

TEST_F(ServerControl, StartingARunningReceiverDoesNothing) {
    ASSERT_TRUE(StartServer());
    ASSERT_TRUE(WaitForLogLines("Listener thread started (UDP 161)."));
    ASSERT_TRUE(WaitForLogLines("Trap thread started (UDP 162)."));
    const UdpSocketRef socket = ServerState.trapSocket;
    const Lines before = LogLines();
    EXPECT_TRUE(StartServer());
    EXPECT_EQ(LogLines(), before);
    EXPECT_EQ(ServerState.trapSocket, socket);
}

TEST_F(ServerControl, StoppingTwiceLogsOnce) {
    ASSERT_TRUE(StartServer());
    StopServer();
    StopServer();
    EXPECT_EQ(CountLogLines("Stopping server..."), 1U);
    EXPECT_EQ(CountLogLines("Server stopped."), 1U);
}

TEST_F(ServerControl, StopClosesEverythingAndWaitsForBothThreads) {
    ASSERT_TRUE(StartServer());
    ASSERT_TRUE(WaitForLogLines("Trap thread started (UDP 162)."));
    ASSERT_TRUE(WaitForLogLines("Listener thread started (UDP 161)."));
    StopServer();
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(ServerState.trapSocket, nullptr);
    EXPECT_EQ(ServerState.listenerSocket, nullptr);
    EXPECT_EQ(ServerState.forwardSocket, nullptr);
    EXPECT_EQ(ServerState.trapThreadHandle, nullptr);
    EXPECT_EQ(ServerState.listenerThreadHandle, nullptr);
    const Lines lines = LogLines();
    const size_t stopping = IndexOf(lines, "Stopping server...");
    const size_t stopped = IndexOf(lines, "Server stopped.");
    EXPECT_EQ(stopped, lines.size() - 1);
    for (const char* ended : {"Trap thread stopped.", "Listener thread stopped (UDP 161)."}) {
        EXPECT_GT(IndexOf(lines, ended), stopping) << ended;
        EXPECT_LT(IndexOf(lines, ended), stopped) << ended;
    }
}

TEST_F(ServerControl, StopThenStartAtOnceRebindsPort162) {
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(StartServer()) << "round " << round;
        StopServer();
    }
    ASSERT_TRUE(StartServer());
    LoopbackClient().Send(Sample("v2_link_down"));
    EXPECT_TRUE(WaitForTraps(1));
}

TEST_F(ServerControl, FailedBindOf162LeavesTheReceiverStoppedWithNothingOpen) {
    std::optional<ExclusivePort> holder(kTrapPort);
    ASSERT_TRUE(holder->bound());
    EXPECT_FALSE(StartServer());
    EXPECT_EQ(LogLines(), (Lines{"Starting server...",
                                 "Bind failed on UDP 162 (Traps). Run as admin or free the port."}));
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(ServerState.trapSocket, nullptr);
    EXPECT_EQ(ServerState.listenerSocket, nullptr);
    EXPECT_EQ(ServerState.forwardSocket, nullptr);
    EXPECT_EQ(ServerState.trapThreadHandle, nullptr);
    holder.reset();
    EXPECT_TRUE(StartServer()) << "once the port is free";
}

TEST_F(ServerControl, FailedBindOf161WarnsAndRunsWith162Only) {
    const ExclusivePort holder(kListenerPort);
    ASSERT_TRUE(holder.bound());
    ASSERT_TRUE(StartServer());
    EXPECT_TRUE(ServerState.running);
    EXPECT_EQ(ServerState.listenerSocket, nullptr);
    EXPECT_EQ(ServerState.listenerThreadHandle, nullptr);
    LoopbackClient().Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    StopServer();
    const Lines lines = LogLines();
    EXPECT_EQ(lines[1], "Warning: bind failed on UDP 161 (SNMP). Continuing with 162 only.");
    EXPECT_EQ(CountLogLines("Listener thread started (UDP 161)."), 0U);
    EXPECT_EQ(CountLogLines("Listener thread stopped (UDP 161)."), 0U);
}

TEST_F(ServerControl, TheLastTrapIsUnchangedByStopAndStart) {
    ASSERT_TRUE(StartServer());
    LoopbackClient client;
    client.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    const uint64_t tick = ServerState.lastTrapTick;
    const std::wstring sender = L"127.0.0.1:" + std::to_wstring(client.port());
    EXPECT_GT(tick, 0U);
    EXPECT_EQ(CopyLastTrapSender(), sender);
    StopServer();
    ASSERT_TRUE(StartServer());
    EXPECT_EQ(ServerState.lastTrapTick, tick);
    EXPECT_EQ(CopyLastTrapSender(), sender);
}

TEST_F(ServerControl, TheLastSenderIsCopiedAndReplacedUnderItsLock) {
    EXPECT_TRUE(WaitsFor(LastTrapSenderLock, [] { CopyLastTrapSender(); }));
    EXPECT_TRUE(WaitsFor(LastTrapSenderLock, [] { SetLastTrap({0x0A010203, 49152}); }));
}

// The trap thread is busy for longer than the stop waits. It finishes its trap, but must neither receive for
// the next run nor log its end twice.
TEST_F(ServerControl, AWorkerThatOutlivesItsStopDoesNotServeTheNextRun) {
    ASSERT_TRUE(StartServer());
    LoopbackClient client;
    {
        const std::lock_guard lock(MibStoreLock);
        client.Send(Sample("v2_link_down"));
        ASSERT_TRUE(WaitUntil([] { return ServerState.lastTrapTick != 0; }));
        StopServer();
        EXPECT_EQ(CountLogLines("Server stopped."), 1U);
        EXPECT_EQ(CountLogLines("Trap thread stopped."), 0U) << "the worker is still busy";
        ASSERT_TRUE(StartServer());
    }
    ASSERT_TRUE(WaitForLogLines("Trap thread stopped.")) << "the old worker ends during the new run";
    constexpr size_t kTraps = 50;
    for (size_t sent = 0; sent < kTraps; ++sent) {
        client.Send(Sample("v2_link_down"));
        ASSERT_TRUE(WaitForTraps(sent + 2));
    }
    EXPECT_EQ(TrapRecords().size(), kTraps + 1);
    EXPECT_EQ(CountLogLines("Trap thread started (UDP 162)."), 2U);
    EXPECT_EQ(CountLogLines("Trap thread stopped."), 1U);
}

}  // namespace
