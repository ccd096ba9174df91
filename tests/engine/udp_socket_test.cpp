// The seam's promises about sockets that are closed under their reader.
#include "platform/udp_socket.h"

#include <atomic>
#include <thread>

#include "tests/engine/engine_fixture.h"
#include "tests/support/datagrams.h"

namespace {

class UdpSockets : public EngineTest {
  protected:
    static ReceiveResult ReceiveOnce(UdpSocket& socket) {
        uint8_t buffer[16];
        size_t size = 0;
        Ipv4Endpoint sender;
        return ReceiveDatagram(socket, buffer, sizeof buffer, &size, &sender);
    }
};

TEST_F(UdpSockets, ClosingWakesTheReceiverThatWaits) {
    const UdpSocketRef socket = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*socket, 30001));
    std::atomic<bool> entered{false};
    ReceiveResult result = ReceiveResult::Failed;
    std::thread receiver([&] {
        entered = true;
        result = ReceiveOnce(*socket);
    });
    ASSERT_TRUE(WaitUntil([&] { return entered.load(); }));
    CloseUdpSocket(*socket);
    receiver.join();
    EXPECT_EQ(result, ReceiveResult::Closed);
}

TEST_F(UdpSockets, AClosedSocketAnswersAsClosedToEveryCall) {
    const UdpSocketRef socket = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*socket, 30002));
    CloseUdpSocket(*socket);
    CloseUdpSocket(*socket);
    EXPECT_EQ(ReceiveOnce(*socket), ReceiveResult::Closed);
    EXPECT_EQ(SendDatagram(*socket, {kLoopback, 30002}, nullptr, 0), SendResult::Closed);
}

// The system may give the closed socket's handle to the next one.
TEST_F(UdpSockets, AClosedSocketDoesNotReceiveForItsSuccessor) {
    const UdpSocketRef first = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*first, 30003));
    CloseUdpSocket(*first);
    const UdpSocketRef second = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*second, 30003));
    LoopbackClient client;
    client.Send({2}, 30003);
    EXPECT_EQ(ReceiveOnce(*first), ReceiveResult::Closed);
    uint8_t buffer[16] = {};
    size_t size = 0;
    Ipv4Endpoint sender;
    ASSERT_EQ(ReceiveDatagram(*second, buffer, sizeof buffer, &size, &sender), ReceiveResult::Datagram);
    EXPECT_EQ(buffer[0], 2);
    EXPECT_EQ(sender.address, kLoopback);
    EXPECT_EQ(sender.port, client.port());
    CloseUdpSocket(*second);
}

TEST_F(UdpSockets, ABoundSocketHearsEveryAddressOfTheMachine) {
    const UdpSocketRef socket = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*socket, 30004));
    const UdpSocketRef sender = OpenUdpSocket();
    for (const uint32_t address : {0x7F000001U, 0x7F000002U, 0x7FFFFFFEU}) {
        const uint8_t octet = 1;
        ASSERT_EQ(SendDatagram(*sender, {address, 30004}, &octet, 1), SendResult::Sent);
        uint8_t buffer[16];
        size_t size = 0;
        Ipv4Endpoint from;
        EXPECT_TRUE(WaitUntil([&] {
            return TryReceiveDatagram(*socket, buffer, sizeof buffer, &size, &from) ==
                   ReceiveResult::Datagram;
        })) << std::hex
            << address;
    }
    CloseUdpSocket(*sender);
    CloseUdpSocket(*socket);
}

// As a start does while the socket of the run before is still there.
TEST_F(UdpSockets, APortThatOneOfOursStillHoldsCanBeBound) {
    const UdpSocketRef former = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*former, 30005));
    const UdpSocketRef next = OpenUdpSocket();
    EXPECT_TRUE(BindToAllAddresses(*next, 30005));
    CloseUdpSocket(*next);
    CloseUdpSocket(*former);
}

TEST_F(UdpSockets, OnlyPlainDottedAddressesParse) {
    uint32_t address = 42;
    for (const char* text :
         {"", " 127.0.0.1", "127.0.0.1 ", "127.1", "0x7f.0.0.1", "256.0.0.1", "1.2.3.4.5", "01.2.3.4"}) {
        EXPECT_FALSE(ParseIpv4Address(text, &address)) << text;
        EXPECT_EQ(address, 42U) << text;
    }
    EXPECT_TRUE(ParseIpv4Address("10.1.2.3", &address));
    EXPECT_EQ(address, 0x0A010203U);
}

}  // namespace
