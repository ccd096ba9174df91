// UDP 161: bound, logged, otherwise ignored.
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

constexpr char kLogged[] = "Datagram on UDP 161 from 127.0.0.1.";

class Listener : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        ASSERT_TRUE(StartServer());
    }

    LoopbackClient client;
};

TEST_F(Listener, ARequestIsLoggedOnceAndNotAnswered) {
    client.Send(Sample("get_request_two_bindings"), kListenerPort);
    ASSERT_TRUE(WaitForLogLines(kLogged));
    const Octets marker = {9};
    client.Send(marker, client.port());
    EXPECT_EQ(client.Receive(), marker);
    EXPECT_EQ(CountLogLines(kLogged), 1U);
}

TEST_F(Listener, DatagramsOn161ChangeNeitherTrapFileNorLastTrap) {
    client.Send(Sample("v2_link_down"), kListenerPort);
    ASSERT_TRUE(WaitForLogLines(kLogged));
    EXPECT_EQ(TrapFile(), "");
    EXPECT_EQ(ServerState.lastTrapTick, 0U);
    EXPECT_EQ(CopyLastTrapSender(), L"");
}

TEST_F(Listener, AFloodLogsOneLineForEachDatagram) {
    constexpr size_t kFlood = 150;
    for (size_t sent = 0; sent < kFlood; ++sent) {
        client.Send({0x30}, kListenerPort);
    }
    EXPECT_TRUE(WaitForLogLines(kLogged, kFlood));
    client.Send({}, kListenerPort);
    EXPECT_TRUE(WaitForLogLines(kLogged, kFlood + 1));
    EXPECT_EQ(CountLogLines(kLogged), kFlood + 1);
}

TEST_F(Listener, ADatagramLongerThanTheBufferIsLoggedLikeAnyOther) {
    client.Send(Octets(5000, 0x30), kListenerPort);
    client.Send({}, kListenerPort);
    ASSERT_TRUE(WaitForLogLines(kLogged, 2));
}

}  // namespace
