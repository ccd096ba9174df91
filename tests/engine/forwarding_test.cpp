// Datagrams forwarded to the configured address.
#include <mutex>
#include <thread>

#include "config/forwarding_settings.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"

namespace {

constexpr char kFailed[] = "Forwarding failed (sendto error).";
const Octets kMarker = {0xEE};

class Forwarding : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        ASSERT_TRUE(StartServer());
        ReplaceForwarding(true, L"127.0.0.1", target.port());
    }

    void SendAndWait(const Octets& octets) {
        client.Send(octets);
        ASSERT_TRUE(WaitForTraps(++sent));
    }

    // Checks that the first datagram the target receives is its own marker. Once a trap is recorded, all
    // earlier ones have been forwarded.
    void ExpectNothingForwarded() {
        ForwardingSettings.forwardingEnabled = false;
        SendAndWait({});
        target.Send(kMarker, target.port());
        EXPECT_EQ(target.Receive(), kMarker);
    }

    LoopbackClient client;
    LoopbackClient target;
    size_t sent = 0;
};

TEST_F(Forwarding, DatagramsOfEveryKindAndSizeAreForwardedUnchanged) {
    for (const Octets& octets :
         {Sample("v2_link_down"), Octets{}, Octets{0xFF, 0x00, 0x80}, LargestMessage(), Octets{1}}) {
        client.Send(octets);
        EXPECT_EQ(target.Receive(), octets);
    }
}

TEST_F(Forwarding, ANewTargetAppliesToTheNextDatagram) {
    LoopbackClient otherTarget;
    client.Send({1});
    EXPECT_EQ(target.Receive(), Octets{1});
    ReplaceForwarding(true, L"127.0.0.1", otherTarget.port());
    client.Send({2});
    EXPECT_EQ(otherTarget.Receive(), Octets{2});
}

TEST_F(Forwarding, NothingIsSentWhileItIsOff) {
    ForwardingSettings.forwardingEnabled = false;
    SendAndWait(Sample("v2_link_down"));
    ExpectNothingForwarded();
}

// The trap thread sees forwarding on, but when it copies the target, forwarding is off and the target is new.
TEST_F(Forwarding, ATrapWhileForwardingIsSwitchedOffIsNotSentToTheNewTarget) {
    LoopbackClient newTarget;
    {
        const std::lock_guard lock(ForwardingLock);
        SendAndWait(Sample("v2_link_down"));
        // Time to read the flag and reach the lock. Too short a sleep can hide a bug but not cause a failure.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ForwardingSettings.forwardingEnabled = false;
        ForwardingSettings.forwardingPort = newTarget.port();
    }
    SendAndWait({});
    newTarget.Send(kMarker, newTarget.port());
    EXPECT_EQ(newTarget.Receive(), kMarker);
}

TEST_F(Forwarding, AnythingButADottedAddressSendsAndLogsNothing) {
    for (const wchar_t* address : {L"", L"localhost", L" 127.0.0.1", L"127.0.0.1 ", L"::1", L"127.1",
                                   L"127.0.0.01", L"0x7f.0.0.1", L"127.0.0.1:162", L"\u20AC"}) {
        ReplaceForwarding(true, address, target.port());
        SendAndWait(Sample("v2_link_down"));
    }
    ExpectNothingForwarded();
    EXPECT_EQ(CountLogLines(kFailed), 0U);
}

TEST_F(Forwarding, EachRefusedSendIsLoggedAndTheNextDatagramIsTried) {
    ReplaceForwarding(true, L"255.255.255.255", target.port());  // an ordinary socket may not broadcast
    client.Send(Sample("v2_link_down"));
    client.Send(Sample("v2_link_down"));
    ASSERT_TRUE(WaitForLogLines(kFailed, 2));
    ReplaceForwarding(true, L"127.0.0.1", target.port());
    client.Send({7});
    EXPECT_EQ(target.Receive(), Octets{7});
    EXPECT_EQ(CountLogLines(kFailed), 2U);
}

TEST_F(Forwarding, ForwardingToOurOwnPortLoopsForever) {
    ReplaceForwarding(true, L"127.0.0.1", kTrapPort);
    client.Send(Sample("v2_link_down"));
    EXPECT_TRUE(WaitForTraps(20)) << "from a single datagram";
    ForwardingSettings.forwardingEnabled = false;
}

}  // namespace
