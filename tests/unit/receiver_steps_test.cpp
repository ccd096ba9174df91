// Each step by which the receiver starts, receives and stops. Sockets, threads, clock and files are replaced
// by linking with ones that write down what is asked of them and refuse on demand, hence a program of its
// own: no real system shows a wait that is too long, or a socket that it has not got.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/app_paths.h"
#include "platform/clock.h"
#include "platform/thread.h"
#include "platform/udp_socket.h"
#include "tests/support/stamps.h"
#include "tests/support/watched_files.h"
#include "trap/listener_thread.h"
#include "trap/receive_loop.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

struct UdpSocket {
    std::string name;
};

struct WorkerThread {
    std::string name;
};

namespace {

using Steps = std::vector<std::string>;

// The system as one test wants it, and what was asked of it.
struct System {
    Steps steps;
    int socketsLeft = 3;
    uint16_t takenPort = 0;
    std::deque<ReceiveResult> receptions;  // Closed when there are none left
    int waitsRefused = 0;
    int sockets = 0;
    int threads = 0;
} wanted;

void Note(const std::string& step) {
    wanted.steps.push_back(step);
}

}  // namespace

UdpSocketRef OpenUdpSocket() {
    if (wanted.socketsLeft-- <= 0) {
        return nullptr;
    }
    auto socket = std::make_shared<UdpSocket>();
    socket->name = "socket " + std::to_string(++wanted.sockets);
    Note("open " + socket->name);
    return socket;
}

bool BindToAllAddresses(UdpSocket& socket, uint16_t port) {
    Note("bind " + socket.name + " to " + std::to_string(port));
    return port != wanted.takenPort;
}

void RequestReceiveBuffer(UdpSocket& socket, int octets) {
    Note("ask for " + std::to_string(octets) + " octets for " + socket.name);
}

ReceiveResult TakeDatagram(UdpSocket&, uint8_t*, size_t, size_t* size, Ipv4Endpoint* sender) {
    if (wanted.receptions.empty()) {
        return ReceiveResult::Closed;
    }
    const ReceiveResult result = wanted.receptions.front();
    wanted.receptions.pop_front();
    if (result == ReceiveResult::Datagram) {
        *size = 1;
        *sender = {};
    }
    return result;
}

bool WaitForDatagram(UdpSocket&) {
    Note("wait for a datagram");
    return wanted.waitsRefused-- <= 0;
}

SendResult SendDatagram(UdpSocket&, const Ipv4Endpoint&, const uint8_t*, size_t) {
    return SendResult::Sent;
}

void EndWaiting(UdpSocket& socket) {
    Note("end the waiting of " + socket.name);
}

void CloseUdpSocket(UdpSocket& socket) {
    Note("close " + socket.name);
}

bool ParseIpv4Address(const std::string&, uint32_t*) {
    return false;
}

WorkerThreadHandle StartWorkerThread(std::function<void()>) {
    const std::string name = "worker " + std::to_string(++wanted.threads);
    Note("start " + name + (ServerState.running ? " for a receiver that runs" : " too early"));
    return WorkerThreadHandle(new WorkerThread{name});
}

bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds) {
    Note("wait " + std::to_string(milliseconds) + " ms for " + thread.name);
    return false;  // held up
}

void WorkerThreadCloser::operator()(WorkerThread* thread) const {
    Note("let go of " + thread->name);
    delete thread;
}

LocalTime ReadLocalTime() {
    return {2026, 3, 7, 9, 5, 2, 47};
}

uint64_t ReadTickCount() {
    return 1;
}

void SleepMilliseconds(uint32_t milliseconds) {
    Note("sleep " + std::to_string(milliseconds) + " ms");
}

namespace {

class ReceiverSteps : public testing::Test {
  protected:
    ReceiverSteps() {
        wanted = {};
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

// ---- Starting and stopping

TEST_F(ReceiverSteps, AStartOpensBindsAndStartsEachInItsTurn) {
    EXPECT_TRUE(StartServer());
    EXPECT_EQ(wanted.steps,
              (Steps{"log Starting server...", "open socket 1", "open socket 2", "bind socket 2 to 162",
                     "ask for 33554432 octets for socket 2", "open socket 3", "bind socket 3 to 161",
                     "start worker 1 for a receiver that runs", "start worker 2 for a receiver that runs",
                     "button: running", "log Server started.", "repaint"}));
}

TEST_F(ReceiverSteps, AStopWaitsAsLongForEachWorkerAsItSaysAndAnnouncesItselfLast) {
    ASSERT_TRUE(StartServer());
    wanted.steps.clear();
    StopServer();
    EXPECT_EQ(wanted.steps, (Steps{"log Stopping server...", "close socket 2", "close socket 3",
                                   "end the waiting of socket 1", "wait 1500 ms for worker 1",
                                   "let go of worker 1", "wait 1500 ms for worker 2", "let go of worker 2",
                                   "close socket 1", "button: stopped", "log Server stopped.", "repaint"}));
}

TEST_F(ReceiverSteps, WithoutASocketToForwardWithThereIsNoStart) {
    wanted.socketsLeft = 0;
    EXPECT_FALSE(StartServer());
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(wanted.steps, (Steps{"log Starting server...", "log Failed to create forwarding socket."}));
}

TEST_F(ReceiverSteps, WithoutASocketForTrapsTheOtherIsClosedAgain) {
    wanted.socketsLeft = 1;
    EXPECT_FALSE(StartServer());
    EXPECT_FALSE(ServerState.running);
    EXPECT_EQ(ServerState.forwardSocket, nullptr);
    EXPECT_EQ(wanted.steps, (Steps{"log Starting server...", "open socket 1",
                                   "log Bind failed on UDP 162 (Traps). Run as admin or free the port.",
                                   "close socket 1"}));
}

TEST_F(ReceiverSteps, APort162ThatIsTakenClosesBothSockets) {
    wanted.takenPort = 162;
    EXPECT_FALSE(StartServer());
    EXPECT_EQ(wanted.steps,
              (Steps{"log Starting server...", "open socket 1", "open socket 2", "bind socket 2 to 162",
                     "close socket 2", "log Bind failed on UDP 162 (Traps). Run as admin or free the port.",
                     "close socket 1"}));
}

TEST_F(ReceiverSteps, APort161ThatIsTakenLeavesOneWorkerToStartAndToWaitFor) {
    wanted.takenPort = 161;
    EXPECT_TRUE(StartServer());
    StopServer();
    EXPECT_EQ(wanted.steps, (Steps{"log Starting server...",
                                   "open socket 1",
                                   "open socket 2",
                                   "bind socket 2 to 162",
                                   "ask for 33554432 octets for socket 2",
                                   "open socket 3",
                                   "bind socket 3 to 161",
                                   "close socket 3",
                                   "log Warning: bind failed on UDP 161 (SNMP). Continuing with 162 only.",
                                   "start worker 1 for a receiver that runs",
                                   "button: running",
                                   "log Server started.",
                                   "repaint",
                                   "log Stopping server...",
                                   "close socket 2",
                                   "end the waiting of socket 1",
                                   "wait 1500 ms for worker 1",
                                   "let go of worker 1",
                                   "close socket 1",
                                   "button: stopped",
                                   "log Server stopped.",
                                   "repaint"}));
}

// ---- Receiving

struct CountingTurn : ReceiveTurn {
    std::span<uint8_t> Room() override { return buffer; }
    void Take(size_t, const Ipv4Endpoint&) override { ++taken; }
    void Clear() override {}

    std::array<uint8_t, 16> buffer{};
    int taken = 0;
};

// Receives until the socket is closed; returns how many datagrams were taken.
int ReceiveAll() {
    UdpSocket socket;
    CountingTurn turn;
    ServerState.running = true;
    ReceiveWhileRunning(socket, turn, [] {});
    ServerState.running = false;
    return turn.taken;
}

TEST_F(ReceiverSteps, AReceiveErrorIsRetriedAfterTenMillisecondsWithoutLimitAndWithoutAWord) {
    constexpr size_t kErrors = 1000;
    wanted.receptions.assign(kErrors, ReceiveResult::Failed);
    wanted.receptions.push_back(ReceiveResult::Datagram);
    EXPECT_EQ(ReceiveAll(), 1);
    EXPECT_EQ(wanted.steps, Steps(kErrors, "sleep 10 ms"));
}

TEST_F(ReceiverSteps, ADatagramIsWaitedForWithoutASleep) {
    wanted.receptions = {ReceiveResult::NothingThere, ReceiveResult::Datagram, ReceiveResult::NothingThere,
                         ReceiveResult::Datagram};
    EXPECT_EQ(ReceiveAll(), 2);
    EXPECT_EQ(wanted.steps, Steps(2, "wait for a datagram"));
}

TEST_F(ReceiverSteps, AWaitThatTheSystemRefusesIsRetriedAsAnErrorIs) {
    wanted.receptions = {ReceiveResult::NothingThere, ReceiveResult::Datagram};
    wanted.waitsRefused = 1;
    EXPECT_EQ(ReceiveAll(), 1);
    EXPECT_EQ(wanted.steps, (Steps{"wait for a datagram", "sleep 10 ms"}));
}

TEST_F(ReceiverSteps, AClosedSocketEndsTheReceivingAtOnce) {
    EXPECT_EQ(ReceiveAll(), 0);
    EXPECT_EQ(wanted.steps, Steps());
}

// ---- UDP 161

// Runs the body of its worker until the socket is closed; returns the lines of each write to log.txt.
std::vector<ptrdiff_t> RunListener() {
    std::vector<ptrdiff_t> writes;
    Files.onAppend = [&](const std::wstring&, std::string_view octets) {
        writes.push_back(std::count(octets.begin(), octets.end(), '\n'));
    };
    UdpSocket socket;
    ServerState.running = true;
    ListenerThread(socket);
    ServerState.running = false;
    return writes;
}

constexpr ptrdiff_t kStarted = 1;
constexpr ptrdiff_t kStopped = 1;

TEST_F(ReceiverSteps, WhatWaitsOn161IsLoggedAtMost256LinesAtATime) {
    wanted.receptions.assign(600, ReceiveResult::Datagram);
    EXPECT_EQ(RunListener(), (std::vector<ptrdiff_t>{kStarted, 256, 256, 88, kStopped}));
}

TEST_F(ReceiverSteps, AnIdle161WritesNothing) {
    wanted.receptions.assign(3, ReceiveResult::NothingThere);
    EXPECT_EQ(RunListener(), (std::vector<ptrdiff_t>{kStarted, kStopped}));
}

}  // namespace
