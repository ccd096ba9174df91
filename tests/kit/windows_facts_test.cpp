// Properties of Windows that the program depends on and that Wine cannot show.
#include <gtest/gtest.h>

#include <cwctype>
#include <thread>

#include "platform/files.h"
#include "platform/udp_socket.h"
#include "platform/windows/windows_headers.h"
#include "tests/kit/data_folder_aside.h"
#include "tests/kit/fact.h"
#include "tests/support/loopback_client.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/wait_until.h"

namespace {

using namespace std::chrono_literals;

class WindowsFacts : public ::testing::Test {
  protected:
    WindowsFacts() { StartSocketLibrary(); }
    ~WindowsFacts() override { StopSocketLibrary(); }
};

// A UDP socket like those of the program, but bound to 127.0.0.1.
class PlainSocket {
  public:
    PlainSocket() : socket_(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP)) {
        u_long nonBlocking = 1;
        ioctlsocket(socket_, static_cast<long>(FIONBIO), &nonBlocking);
        sockaddr_in address = Address(kLoopback, 0);
        int size = sizeof address;
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), size), 0);
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
    }
    ~PlainSocket() { closesocket(socket_); }
    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;

    uint16_t port() const { return port_; }

    // Returns the system's error, or 0.
    int SendTo(uint32_t target, uint16_t port, int size) const {
        static const std::string octets(65'000, 'x');
        const sockaddr_in address = Address(target, port);
        return sendto(socket_, octets.data(), size, 0, reinterpret_cast<const sockaddr*>(&address),
                      sizeof address) < 0
                   ? WSAGetLastError()
                   : 0;
    }

    int ReceiveBuffer() const {
        int octets = 0;
        int size = sizeof octets;
        getsockopt(socket_, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<char*>(&octets), &size);
        return octets;
    }
    void RequestReceiveBuffer(int octets) const {
        setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&octets), sizeof octets);
    }

    bool Receive() const {
        char buffer[512];
        return recv(socket_, buffer, sizeof buffer, 0) >= 0;
    }

  private:
    static sockaddr_in Address(uint32_t address, uint16_t port) {
        sockaddr_in filled = {};
        filled.sin_family = AF_INET;
        filled.sin_port = htons(port);
        filled.sin_addr.s_addr = htonl(address);
        return filled;
    }

    SOCKET socket_;
    uint16_t port_ = 0;
};

std::string ErrorText(int error) {
    return error == 0 ? "accepted" : "error " + std::to_string(error);
}

// The system then chooses which of the two receives a trap.
TEST_F(WindowsFacts, TwoReceiversCanBindTheSamePort) {
    const UdpSocketRef first = OpenUdpSocket();
    const UdpSocketRef second = OpenUdpSocket();
    ASSERT_TRUE(BindToAllAddresses(*first, 162));
    EXPECT_TRUE(BindToAllAddresses(*second, 162));
    CloseUdpSocket(*first);
    CloseUdpSocket(*second);
}

TEST_F(WindowsFacts, HowLargeAReceiveBufferTheSystemGrants) {
    const PlainSocket socket;
    Fact("receive buffer by default: " + std::to_string(socket.ReceiveBuffer()) + " octets");
    for (const int mebibytes : {8, 32, 64}) {
        socket.RequestReceiveBuffer(mebibytes * 1024 * 1024);
        Fact("receive buffer when " + std::to_string(mebibytes) +
             " MiB are requested: " + std::to_string(socket.ReceiveBuffer()) + " octets");
    }
}

// The datagrams sent here need more than 32 MiB. They may arrive some time after they were sent.
TEST_F(WindowsFacts, HowManyDatagramsFitIntoTheReceiveBuffer) {
    const PlainSocket receiver;
    receiver.RequestReceiveBuffer(32 * 1024 * 1024);
    const PlainSocket sender;
    for (int sent = 0; sent < 120'000; ++sent) {
        sender.SendTo(kLoopback, receiver.port(), 300);
    }
    size_t received = 0;
    ASSERT_TRUE(WaitUntil([&] { return receiver.Receive(); }));
    do {
        ++received;
    } while (WaitUntil([&] { return receiver.Receive(); }, 500ms));
    Fact("datagrams of 300 octets that fit into a receive buffer for which 32 MiB are requested: " +
         std::to_string(received));
}

// sendto documents WSAEACCES for a broadcast address on a socket without SO_BROADCAST.
TEST_F(WindowsFacts, ABroadcastIsRefused) {
    EXPECT_EQ(PlainSocket().SendTo(INADDR_BROADCAST, 162, 100), WSAEACCES);
}

TEST_F(WindowsFacts, SendingWithoutAReceiver) {
    LoopbackClient closed;
    const uint16_t port = closed.port();
    closed.Close();
    const PlainSocket socket;
    const int first = socket.SendTo(kLoopback, port, 100);
    std::this_thread::sleep_for(200ms);  // an ICMP error may arrive meanwhile
    Fact("sending to a closed port of this computer: " + ErrorText(first) + ", a moment later " +
         ErrorText(socket.SendTo(kLoopback, port, 100)));
    // Reserved: no network delivers to it.
    Fact("sending to 240.0.0.1: " + ErrorText(socket.SendTo(0xF0000001, 162, 100)));
    Fact("sending to 0.0.0.0: " + ErrorText(socket.SendTo(INADDR_ANY, port, 100)));
}

TEST_F(WindowsFacts, SendingToAFullBuffer) {
    const PlainSocket receiver;
    const PlainSocket sender;
    int sent = 0;
    int error = 0;
    for (; sent < 10'000 && error == 0; ++sent) {
        error = sender.SendTo(kLoopback, receiver.port(), 60'000);
    }
    Fact("sending datagrams of 60,000 octets to a program that does not read them: number " +
         std::to_string(sent) + ": " + ErrorText(error));
}

// Returns the codes of the characters beyond ASCII for which `matches` is true.
std::string CodesOf(bool (*matches)(wchar_t)) {
    std::string codes;
    for (unsigned code = 0x80; code < 0x10000; ++code) {
        if (matches(static_cast<wchar_t>(code))) {
            char text[16];
            snprintf(text, sizeof text, " U+%04X", code);
            codes += text;
        }
    }
    return codes;
}

TEST_F(WindowsFacts, WhichCharactersAreWhiteSpaceAndDigits) {
    Fact("white space beyond ASCII:" +
         CodesOf([](wchar_t character) { return std::iswspace(character) != 0; }));
    Fact("the digit 7 beyond ASCII:" + CodesOf([](wchar_t character) {
             const wchar_t text[] = {character, 0};
             return _wtoi(text) == 7;
         }));
}

TEST_F(WindowsFacts, AReadOnlyFileIsDeletedByTheProgram) {
    const ScratchFolder folder;
    const std::wstring path = folder.Join(L"read-only.mib");
    ASSERT_TRUE(AppendOctets(path, "x"));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    Fact(std::string("the system deletes a read-only file: ") + (DeleteFileW(path.c_str()) ? "yes" : "no"));
    EXPECT_TRUE(RemoveFile(path));
    EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

// A data folder with a file that another program, such as a virus scanner, has open for a moment.
class FolderInUse : public ::testing::Test {
  protected:
    void Use(const std::wstring& path) {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(file, INVALID_HANDLE_VALUE);
        user_ = std::thread([file] {
            std::this_thread::sleep_for(300ms);
            CloseHandle(file);
        });
    }
    ~FolderInUse() override {
        if (user_.joinable()) {
            user_.join();
        }
    }

    ScratchFolder scratch_;
    const std::wstring data_ = scratch_.Join(L"Quillmont");
    const std::wstring file_ = data_ + L"\\SNMP.txt";
    std::thread user_;
};

TEST_F(FolderInUse, IsMovedAsideAndPutBackOnceItIsFree) {
    CreateDirectoryW(data_.c_str(), nullptr);
    WriteOctets(file_, "the user's");
    DataFolderAside aside(data_);
    Use(file_);
    ASSERT_TRUE(aside.MoveAside());
    user_.join();
    EXPECT_EQ(GetFileAttributesW(data_.c_str()), INVALID_FILE_ATTRIBUTES);

    CreateDirectoryW(data_.c_str(), nullptr);
    WriteOctets(file_, "the check's");
    Use(file_);
    EXPECT_TRUE(aside.PutBack());
    EXPECT_EQ(ReadOctets(file_), "the user's");
}

}  // namespace
