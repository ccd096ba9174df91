// The order in which the receiver starts and stops, also when a step fails. The system is a fake.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "core/app_paths.h"
#include "tests/support/fake_system.h"
#include "tests/support/stamps.h"
#include "tests/support/watched_files.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

using Steps = std::vector<std::string>;

void Note(const std::string& step) {
    Fake.steps.push_back(step);
}

class ReceiverSteps : public testing::Test {
  protected:
    ReceiverSteps() {
        Fake = {};
        Files.Reset();
        AppPaths.logFilePath = L"\\log.txt";
        Files.onAppend = [](const std::wstring&, std::string_view line) {
            line.remove_prefix(kStampLength + 2);
            Note("log " + std::string(line.substr(0, line.find('\r'))));
        };
        ServerEvents.showRunning = [](bool running) {
            Note(running ? "button: running" : "button: stopped");
        };
        ServerEvents.repaint = [] { Note("repaint"); };
    }
    ~ReceiverSteps() override {
        StopServer();
        ServerEvents = {};
        Files.Reset();
        AppPaths = {};
    }
};

TEST_F(ReceiverSteps, AStartOpensBindsAndStartsInOrder) {
    EXPECT_TRUE(StartServer());
    EXPECT_EQ(Fake.steps,
              (Steps{"log Starting server...", "open socket 1", "open socket 2", "bind socket 2 to 162",
                     "ask for 33554432 octets for socket 2", "open socket 3", "bind socket 3 to 161",
                     "start worker 1 while running", "start worker 2 while running", "button: running",
                     "log Server started.", "repaint"}));
}

TEST_F(ReceiverSteps, AStopWaits1500MillisecondsForEachWorkerAndIsLoggedLast) {
    ASSERT_TRUE(StartServer());
    Fake.steps.clear();
    StopServer();
    EXPECT_EQ(Fake.steps, (Steps{"log Stopping server...", "close socket 2", "close socket 3",
                                 "end waiting on socket 1", "wait 1500 ms for worker 1", "release worker 1",
                                 "wait 1500 ms for worker 2", "release worker 2", "close socket 1",
                                 "button: stopped", "log Server stopped.", "repaint"}));
}

TEST_F(ReceiverSteps, WithoutAForwardingSocketTheStartFails) {
    Fake.socketsLeft = 0;
    EXPECT_FALSE(StartServer());
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(Fake.steps, (Steps{"log Starting server...", "log Failed to create forwarding socket."}));
}

TEST_F(ReceiverSteps, WithoutATrapSocketTheStartFailsAndClosesTheOther) {
    Fake.socketsLeft = 1;
    EXPECT_FALSE(StartServer());
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(ServerState.forwardSocket, nullptr);
    EXPECT_EQ(Fake.steps, (Steps{"log Starting server...", "open socket 1",
                                 "log Bind failed on UDP 162 (Traps). Run as admin or free the port.",
                                 "close socket 1"}));
}

TEST_F(ReceiverSteps, WithPort162InUseTheStartFailsAndClosesBothSockets) {
    Fake.portInUse = 162;
    EXPECT_FALSE(StartServer());
    EXPECT_EQ(Fake.steps,
              (Steps{"log Starting server...", "open socket 1", "open socket 2", "bind socket 2 to 162",
                     "close socket 2", "log Bind failed on UDP 162 (Traps). Run as admin or free the port.",
                     "close socket 1"}));
}

TEST_F(ReceiverSteps, WithPort161InUseOnlyTheTrapThreadIsStartedAndStopped) {
    Fake.portInUse = 161;
    EXPECT_TRUE(StartServer());
    EXPECT_EQ(
        Fake.steps,
        (Steps{"log Starting server...", "open socket 1", "open socket 2", "bind socket 2 to 162",
               "ask for 33554432 octets for socket 2", "open socket 3", "bind socket 3 to 161",
               "close socket 3", "log Warning: bind failed on UDP 161 (SNMP). Continuing with 162 only.",
               "start worker 1 while running", "button: running", "log Server started.", "repaint"}));
    Fake.steps.clear();
    StopServer();
    EXPECT_EQ(Fake.steps, (Steps{"log Stopping server...", "close socket 2", "end waiting on socket 1",
                                 "wait 1500 ms for worker 1", "release worker 1", "close socket 1",
                                 "button: stopped", "log Server stopped.", "repaint"}));
}

TEST_F(ReceiverSteps, WithoutATrapThreadTheStartIsUndone) {
    Fake.threadsLeft = 0;
    EXPECT_FALSE(StartServer());
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(ServerState.trapSocket, nullptr);
    EXPECT_EQ(ServerState.listenerSocket, nullptr);
    EXPECT_EQ(ServerState.forwardSocket, nullptr);
    Fake.steps.erase(Fake.steps.begin(), Fake.steps.begin() + 7);
    EXPECT_EQ(Fake.steps, (Steps{"log Failed to create trap thread.", "log Stopping server...",
                                 "close socket 2", "close socket 3", "end waiting on socket 1",
                                 "close socket 1", "button: stopped", "log Server stopped.", "repaint"}));
}

// Port 161 stays bound although no thread reads from it.
TEST_F(ReceiverSteps, WithoutAListenerThreadTheReceiverRuns) {
    Fake.threadsLeft = 1;
    EXPECT_TRUE(StartServer());
    EXPECT_TRUE(ServerState.running);
    EXPECT_NE(ServerState.listenerSocket, nullptr);
    Fake.steps.erase(Fake.steps.begin(), Fake.steps.begin() + 7);
    EXPECT_EQ(Fake.steps,
              (Steps{"start worker 1 while running", "log Failed to create UDP161 thread. Continuing.",
                     "button: running", "log Server started.", "repaint"}));
    Fake.steps.clear();
    StopServer();
    EXPECT_EQ(Fake.steps, (Steps{"log Stopping server...", "close socket 2", "close socket 3",
                                 "end waiting on socket 1", "wait 1500 ms for worker 1", "release worker 1",
                                 "close socket 1", "button: stopped", "log Server stopped.", "repaint"}));
}

}  // namespace
