// Bursts that come faster than records can be written: what the socket's buffer holds is recorded whole
// and in order, and what it does not hold is lost without a trace of it anywhere. The long measurements
// are in tests/storm.
#include <algorithm>
#include <mutex>

#include "config/forwarding_settings.h"
#include "mib/name_store.h"
#include "tests/engine/engine_fixture.h"
#include "tests/support/receive_buffer.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

// What the receiver asks for.
constexpr int kTrapReceiveBuffer = 32 * 1024 * 1024;

// A small datagram takes up to this much of a receive buffer, the system's own bookkeeping included.
constexpr int kOctetsPerSmallDatagram = 1280;

class Storms : public EngineTest {
  protected:
    static Octets NumberedTrap(size_t number) {
        return EncodeV2Trap({{"1.3.6.1.4.1.9999.1", EncodeInteger(static_cast<int64_t>(number))}});
    }

    static std::string NumberedRecord(size_t number) {
        std::string record = "       FROM: 127.0.0.1\r\r\n---> [1] 1.3.6.1.4.1.9999.1  INTEGER = ";
        return record.append(std::to_string(number));
    }

    static size_t BurstThatTheBufferHolds() {
        const int held = GrantedReceiveBuffer(kTrapReceiveBuffer) / kOctetsPerSmallDatagram;
        return static_cast<size_t>(std::min(held, 3000));
    }

    void SendNumbered(size_t count) {
        for (size_t number = 0; number < count; ++number) {
            client_.Send(NumberedTrap(number));
        }
    }

    LoopbackClient client_;
};

// The worker is held up by the lock that its lookups need, so that the buffer has to take the whole burst.
TEST_F(Storms, ABurstThatTheBufferHoldsIsRecordedWholeAndInOrder) {
    ASSERT_TRUE(StartServer());
    const size_t count = BurstThatTheBufferHolds();
    ASSERT_GE(count, 100U);
    {
        const std::lock_guard holdUp(MibStoreLock);
        SendNumbered(count);
    }
    ASSERT_TRUE(WaitForTraps(count));
    const std::vector<std::string> records = TrapRecords();
    ASSERT_EQ(records.size(), count);
    for (size_t number = 0; number < count; ++number) {
        ASSERT_EQ(records[number], NumberedRecord(number));
    }
}

TEST_F(Storms, AFloodOn161CostsNoTrapThatTheBufferHolds) {
    ASSERT_TRUE(StartServer());
    const size_t count = std::min<size_t>(BurstThatTheBufferHolds(), 1000);
    LoopbackClient flooder;
    for (size_t number = 0; number < count; ++number) {
        flooder.Send({0x30, 0x00}, kListenerPort);
        client_.Send(NumberedTrap(number));
        flooder.Send({}, kListenerPort);
    }
    ASSERT_TRUE(WaitForTraps(count));
    EXPECT_EQ(TrapRecords().size(), count);
    EXPECT_TRUE(WaitForLogLines("Datagram on UDP 161 from 127.0.0.1."));
}

TEST_F(Storms, WhatIsLostInAStormIsLostWholeAndTheRestIsRecordedLoggedAndForwarded) {
    LoopbackClient target;
    ASSERT_TRUE(StartServer());
    constexpr size_t kSent = 3000;
    RequestReceiveBuffer(*ServerState.trapSocket, 64 * 1024);
    {
        const std::lock_guard holdUp(MibStoreLock);
        SendNumbered(kSent);
    }
    // The marker is sent until it arrives: the buffer may still be full.
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
    EXPECT_LT(records.size(), kSent) << "nothing was lost: the storm was none";
    EXPECT_GT(target.Receive().size(), 0U) << "forwarding went on";
}

}  // namespace
