// What only a real Windows can tell, asked where the answer decides how the program behaves.
#include <gtest/gtest.h>

#include <cwctype>
#include <iostream>

#include "platform/files.h"
#include "platform/udp_socket.h"
#include "platform/windows/scoped_handle.h"
#include "tests/support/scratch_folder.h"

namespace {

void Fact(const std::string& text) {
    std::cout << "fact: " << text << std::endl;
}

class WindowsQuestions : public ::testing::Test {
  protected:
    WindowsQuestions() { StartSocketLibrary(); }
    ~WindowsQuestions() override { StopSocketLibrary(); }
};

// A second receiver on the same port is not refused: which of the two gets a trap is the system's choice.
TEST_F(WindowsQuestions, TwoProgramsThatBothAskForItShareAPort) {
    const UdpSocketRef first = OpenUdpSocket();
    const UdpSocketRef second = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*first, 162));
    EXPECT_TRUE(BindToAllAddresses(*second, 162));
    CloseUdpSocket(*first);
    CloseUdpSocket(*second);
}

TEST_F(WindowsQuestions, AReceiveBufferOfThirtyTwoMegabytesIsGranted) {
    const UdpSocketRef socket = OpenUdpSocket();
    Fact("receive buffer without asking: " + std::to_string(QueryReceiveBuffer(*socket)));
    for (const int megabytes : {8, 32, 64}) {
        RequestReceiveBuffer(*socket, megabytes * 1024 * 1024);
        Fact("receive buffer asked for " + std::to_string(megabytes) +
             " MiB: " + std::to_string(QueryReceiveBuffer(*socket)));
    }
    RequestReceiveBuffer(*socket, 32 * 1024 * 1024);
    EXPECT_GT(QueryReceiveBuffer(*socket), 0);
    CloseUdpSocket(*socket);
}

// How many datagrams a buffer holds is the system's own bookkeeping. As many as are sent here take more than
// 32 MiB.
TEST_F(WindowsQuestions, WhatThirtyTwoMegabytesHold) {
    const UdpSocketRef receiver = OpenUdpSocket();
    uint16_t port = 41000;
    while (!BindToAllAddresses(*receiver, port)) {
        ++port;
    }
    RequestReceiveBuffer(*receiver, 32 * 1024 * 1024);
    const UdpSocketRef sender = OpenUdpSocket();
    const std::string datagram(300, 'x');
    const auto* octets = reinterpret_cast<const uint8_t*>(datagram.data());
    for (int sent = 0; sent < 120'000; ++sent) {
        SendDatagram(*sender, {0x7F000001, port}, octets, datagram.size());
    }
    uint8_t buffer[512];
    size_t size = 0;
    Ipv4Endpoint from;
    size_t held = 0;
    while (TakeDatagram(*receiver, buffer, sizeof buffer, &size, &from) == ReceiveResult::Datagram) {
        ++held;
    }
    Fact("datagrams of 300 octets that 32 MiB hold: " + std::to_string(held));
    EXPECT_GT(held, 0U);
    CloseUdpSocket(*receiver);
    CloseUdpSocket(*sender);
}

TEST_F(WindowsQuestions, WhatTheRuntimeTakesForWhiteSpaceAndDigits) {
    std::string spaces;
    for (unsigned code = 0x80; code < 0x10000; ++code) {
        if (std::iswspace(static_cast<wint_t>(code)) != 0) {
            spaces += (spaces.empty() ? "" : " ") + std::to_string(code);
        }
    }
    Fact("white space beyond ASCII, as the runtime classes it: " + spaces);
    EXPECT_NE(std::iswspace(L' '), 0);
    std::string zeros;
    for (unsigned code = 0x80; code < 0x10000; ++code) {
        const wchar_t text[] = {static_cast<wchar_t>(code + 7), 0};
        if (_wtoi(text) == 7) {
            zeros += (zeros.empty() ? "" : " ") + std::to_string(code);
        }
    }
    Fact("zeros of digits that the runtime converts: " + zeros);
    EXPECT_EQ(_wtoi(L"7"), 7);
}

TEST_F(WindowsQuestions, AFileThatIsOpenAsTheProgramOpensItCanBeDeletedAndMadeAnew) {
    const ScratchFolder folder;
    const std::wstring path = folder.Join(L"open.txt");
    ASSERT_TRUE(AppendOctets(path, "first"));
    const ScopedHandle open(CreateFileW(path.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(open);
    EXPECT_TRUE(RemoveFile(path));
    Fact(std::string("a file deleted while somebody reads it can be made anew at once: ") +
         (AppendOctets(path, "second") ? "yes" : "no"));
}

TEST_F(WindowsQuestions, AReadOnlyFileIsRefusedByTheSystemAndTakenByTheProgram) {
    const ScratchFolder folder;
    const std::wstring path = folder.Join(L"read-only.mib");
    ASSERT_TRUE(AppendOctets(path, "x"));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    Fact(std::string("the system deletes a read-only file: ") + (DeleteFileW(path.c_str()) ? "yes" : "no"));
    EXPECT_TRUE(RemoveFile(path));
    EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

}  // namespace
