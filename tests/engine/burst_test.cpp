// Bursts that arrive faster than records can be written. Traps that fit into the socket's buffer are all
// recorded, in order; the others are lost silently.
#include <mutex>

#include "config/forwarding_settings.h"
#include "mib/name_store.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

// Fits into the smallest receive buffer that a system grants.
constexpr size_t kBurst = 150;

class Bursts : public EngineTest {
  protected:
    static Octets NumberedTrap(size_t number) {
        return EncodeV2Trap({{"1.3.6.1.4.1.9999.1", EncodeInteger(static_cast<int64_t>(number))}});
    }

    static std::string NumberedRecord(size_t number) {
        std::string record = "       FROM: 127.0.0.1\r\r\n---> [1] 1.3.6.1.4.1.9999.1  INTEGER = ";
        return record.append(std::to_string(number));
    }

    void SendNumbered(size_t count) {
        for (size_t number = 0; number < count; ++number) {
            client_.Send(NumberedTrap(number));
        }
    }

    LoopbackClient client_;
};

// The trap thread waits for MibStoreLock, so the whole burst is queued.
TEST_F(Bursts, ABurstThatFitsIntoTheBufferIsRecordedInOrder) {
    ASSERT_TRUE(StartServer());
    {
        const std::lock_guard lock(MibStoreLock);
        SendNumbered(kBurst);
    }
    ASSERT_TRUE(WaitForTraps(kBurst));
    EXPECT_EQ(CountLogLines("Trap received (127.0.0.1)."), kBurst);
    const std::vector<std::string> records = TrapRecords();
    ASSERT_EQ(records.size(), kBurst);
    for (size_t number = 0; number < kBurst; ++number) {
        ASSERT_EQ(records[number], NumberedRecord(number));
    }
}

TEST_F(Bursts, AFloodOn161LosesNoTraps) {
    ASSERT_TRUE(StartServer());
    LoopbackClient flooder;
    for (size_t number = 0; number < kBurst; ++number) {
        flooder.Send({0x30, 0x00}, kListenerPort);
        client_.Send(NumberedTrap(number));
        flooder.Send({}, kListenerPort);
    }
    ASSERT_TRUE(WaitForTraps(kBurst));
    EXPECT_EQ(TrapRecords().size(), kBurst);
    EXPECT_TRUE(WaitForLogLines("Datagram on UDP 161 from 127.0.0.1."));
}

TEST_F(Bursts, ALargerBurstLosesWholeTrapsAndTheRestAreRecordedLoggedAndForwarded) {
    LoopbackClient target;
    ASSERT_TRUE(StartServer());
    constexpr size_t kSent = 3000;
    RequestReceiveBuffer(*ServerState.trapSocket, 64 * 1024);
    {
        const std::lock_guard lock(MibStoreLock);
        SendNumbered(kSent);
    }
    // The marker is sent until it is recorded: the buffer may still be full.
    ReplaceForwarding(true, L"127.0.0.1", target.port());
    ASSERT_TRUE(WaitUntil([&] {
        client_.Send(NumberedTrap(kSent));
        return TrapFile().find("INTEGER = 3000\r") != std::string::npos;
    }));
    StopServer();
    const std::vector<std::string> records = TrapRecords();
    EXPECT_EQ(CountLogLines("Trap received (127.0.0.1)."), records.size());
    EXPECT_EQ(records.front(), NumberedRecord(0));
    EXPECT_EQ(records.back(), NumberedRecord(kSent));
    EXPECT_LT(records.size(), kSent) << "nothing was lost: the burst was too small";
    EXPECT_GT(target.Receive().size(), 0U) << "nothing was forwarded";
}

}  // namespace
