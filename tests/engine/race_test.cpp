// Everything at once: the receiver is started and stopped under traffic on both ports while an operator saves
// settings, reloads the MIB files and looks at the windows. A sanitizer ends this program on a data race or a
// use after free.
#include <atomic>
#include <memory>
#include <thread>

#include "config/config_file.h"
#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/mib_folder.h"
#include "mib/name_store.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

constexpr int kRounds = 200;

constexpr std::string_view kMib =
    "raceRoot OBJECT IDENTIFIER ::= { enterprises 9999 }\n"
    "raceValue OBJECT IDENTIFIER ::= { raceRoot 1 }\n";

const Octets kTrap = EncodeV2Trap({{"1.3.6.1.4.1.9999.1", EncodeInteger(7)}});

// Runs `step` repeatedly on another thread until Stop().
class Loop {
  public:
    template <typename Step>
    explicit Loop(Step step)
        : thread_([this, step]() mutable {
              while (!end_) {
                  step();
                  ++rounds_;
                  std::this_thread::yield();
              }
          }) {}
    ~Loop() { Stop(); }
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    int rounds() const { return rounds_; }
    void Stop() {
        end_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }

  private:
    std::atomic<bool> end_{false};
    std::atomic<int> rounds_{0};
    std::thread thread_;  // last, since it uses the others
};

class Races : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        WriteOctets(AppPaths.mibsDir + L"\\race.mib", kMib);
        LoadMibFolder();
    }

    LoopbackClient forwardingTarget_;
};

// One round of the operator's clicks and the windows' timers.
void ActAsOperator(int round, uint16_t targetPort) {
    ReplaceForwarding(round % 4 != 0, round % 2 == 0 ? L"127.0.0.1" : L"no address", targetPort);
    SaveConfig();
    LoadMibFolder();
    EXPECT_EQ(CountOidNames(), 2);
    const uint64_t tick = ServerState.lastTrapTick;
    EXPECT_LE(tick, ReadTickCount());
    const std::wstring sender = CopyLastTrapSender();
    EXPECT_TRUE(sender.empty() || sender.rfind(L"127.0.0.1:", 0) == 0);
    ReadFileFrom(AppPaths.trapFilePath, 0);
    if (round % 16 == 15) {
        // As the clear button does. This also limits what each round reads.
        ClearFile(AppPaths.trapFilePath);
    }
}

// In the program the GUI thread does all of this. Here the operator has a second thread, which tests the
// locks harder.
TEST_F(Races, StartsAndStopsUnderTrafficWithABusyOperatorAreAllLogged) {
    LoopbackClient trapSender;
    LoopbackClient listenerSender;
    Loop traps([&] { trapSender.Send(kTrap); });
    Loop requests([&] { listenerSender.Send({0x30, 0x00}, kListenerPort); });
    Loop operatorActions([this, round = 0]() mutable { ActAsOperator(round++, forwardingTarget_.port()); });
    for (int round = 0; round < kRounds; ++round) {
        ASSERT_TRUE(StartServer()) << "round " << round;
        // Odd rounds stop while the workers are still starting.
        if (round % 2 == 0) {
            ServerState.lastTrapTick = 0;
            ASSERT_TRUE(WaitUntil([] { return ServerState.lastTrapTick != 0; })) << "round " << round;
        }
        StopServer();
    }
    traps.Stop();
    requests.Stop();
    operatorActions.Stop();
    for (const char* message :
         {"Server started.", "Server stopped.", "Trap thread started (UDP 162).", "Trap thread stopped.",
          "Listener thread started (UDP 161).", "Listener thread stopped (UDP 161)."}) {
        EXPECT_TRUE(WaitForLogLines(message, kRounds)) << message;
        EXPECT_EQ(CountLogLines(message), static_cast<size_t>(kRounds)) << message;
    }
    EXPECT_EQ(CountLogLines("Config saved."), static_cast<size_t>(operatorActions.rounds()));
    EXPECT_GE(CountLogLines("Trap received (127.0.0.1)."), static_cast<size_t>(kRounds / 2));
    EXPECT_GT(CountLogLines("Datagram on UDP 161 from 127.0.0.1."), 0U);
    for (const std::string& record : TrapRecords()) {
        ASSERT_EQ(record, "       FROM: 127.0.0.1\r\r\n---> [1] 1.3.6.1.4.1.9999.1 (raceValue)  INTEGER = 7");
    }
}

TEST_F(Races, EachRecordHasItsLogLineWhileTheOperatorIsBusy) {
    constexpr size_t kTraps = 1000;
    constexpr size_t kBurst = 50;
    ASSERT_TRUE(StartServer());
    LoopbackClient sender;
    sender.Send(kTrap);
    ASSERT_TRUE(WaitForTraps(1));
    const uint64_t recordSize = TrapFile().size();
    {
        Loop requests([client = std::make_shared<LoopbackClient>()] { client->Send({}, kListenerPort); });
        Loop operatorActions([this, round = 0]() mutable {
            ReplaceForwarding(round++ % 2 == 0, L"127.0.0.1", forwardingTarget_.port());
            SaveConfig();
            LoadMibFolder();
        });
        for (size_t recorded = 1; recorded < kTraps; recorded += kBurst) {
            for (size_t sent = 0; sent < kBurst; ++sent) {
                sender.Send(kTrap);
            }
            const uint64_t size = (recorded + kBurst) * recordSize;
            ASSERT_TRUE(WaitUntil([size] { return QueryFileSize(AppPaths.trapFilePath) == size; }));
        }
    }
    StopServer();
    EXPECT_EQ(CountLogLines("Trap received (127.0.0.1)."), TrapRecords().size());
}

}  // namespace
