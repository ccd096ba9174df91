// Real sockets.
#include "platform/udp_socket.h"

#include "tests/engine/engine_fixture.h"

namespace {

class UdpSockets : public EngineTest {
  protected:
    // Waits while no datagram is queued.
    ReceiveResult Receive(UdpSocket& socket) {
        for (;;) {
            const ReceiveResult result =
                TryReceiveDatagram(socket, buffer_, sizeof buffer_, &size_, &sender_);
            if (result != ReceiveResult::NothingQueued || !WaitForDatagram(socket)) {
                return result;
            }
        }
    }

    uint8_t buffer_[16] = {};
    size_t size_ = 0;
    Ipv4Endpoint sender_;
};

TEST_F(UdpSockets, EveryCallOnAClosedSocketReportsClosed) {
    const UdpSocketRef socket = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*socket, 30002));
    CloseUdpSocket(*socket);
    CloseUdpSocket(*socket);
    EXPECT_EQ(Receive(*socket), ReceiveResult::Closed);
    EXPECT_EQ(TrySendDatagram(*socket, {kLoopback, 30002}, nullptr, 0), SendResult::Closed);
}

// The system may reuse the closed socket's handle for the next one.
TEST_F(UdpSockets, AClosedSocketDoesNotReceiveForItsSuccessor) {
    const UdpSocketRef first = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*first, 30003));
    CloseUdpSocket(*first);
    const UdpSocketRef second = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*second, 30003));
    LoopbackClient client;
    client.Send({2}, 30003);
    EXPECT_EQ(Receive(*first), ReceiveResult::Closed);
    ASSERT_EQ(Receive(*second), ReceiveResult::Datagram);
    EXPECT_EQ(buffer_[0], 2);
    EXPECT_EQ(sender_.address, kLoopback);
    EXPECT_EQ(sender_.port, client.port());
    CloseUdpSocket(*second);
}

TEST_F(UdpSockets, ABoundSocketReceivesOnEveryAddressOfTheMachine) {
    const UdpSocketRef socket = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*socket, 30004));
    const UdpSocketRef sender = OpenUdpSocket();
    for (const uint32_t address : {0x7F000001U, 0x7F000002U, 0x7FFFFFFEU}) {
        const uint8_t octet = 1;
        ASSERT_EQ(TrySendDatagram(*sender, {address, 30004}, &octet, 1), SendResult::Sent);
        EXPECT_EQ(Receive(*socket), ReceiveResult::Datagram) << std::hex << address;
    }
    CloseUdpSocket(*sender);
    CloseUdpSocket(*socket);
}

// As when the receiver starts while a worker of the last run still uses its socket.
TEST_F(UdpSockets, TwoOfOurSocketsCanBindTheSamePort) {
    const UdpSocketRef former = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*former, 30005));
    const UdpSocketRef next = OpenUdpSocket();
    EXPECT_TRUE(BindToAllAddresses(*next, 30005));
    CloseUdpSocket(*next);
    CloseUdpSocket(*former);
}

TEST_F(UdpSockets, OnlyPlainDottedAddressesAreParsed) {
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
