// Sockets when system calls fail, also with errors that Wine never returns. The system calls are replaced at
// link time by fakes that return what a test sets, hence a separate program.
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "platform/udp_socket.h"
#include "platform/windows/windows_headers.h"

namespace {

constexpr SOCKET kSocket = 0x400;

// What the fakes return in a test, and the calls that they received.
struct System {
    bool isFake = false;  // only during a test; other calls go to the real system
    std::vector<std::string> calls;
    int locks = 0;
    SOCKET socket = kSocket;
    int eventThatFails = 0;  // 1: the first; 0: none
    int events = 0;
    int result = 0;  // of the call under test
    int error = 0;
    DWORD waitResult = WAIT_OBJECT_0;
} fake;

void Note(const std::string& call) {
    fake.calls.push_back(call);
}

// A call that uses the socket, which another thread may close.
int NoteLocked(const std::string& call) {
    EXPECT_EQ(fake.locks, 1) << call;
    Note(call);
    return fake.result;
}

template <typename Function>
Function RealFunction(const char* name) {
    return std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

SOCKET WSAAPI FakeSocket(int, int, int) {
    return fake.socket;
}

int WSAAPI FakeCloseSocket(SOCKET) {
    Note("close socket");
    return 0;
}

int WSAAPI FakeBind(SOCKET, const sockaddr*, int) {
    return NoteLocked("bind");
}

int WSAAPI FakeSetOption(SOCKET, int, int option, const char* value, int) {
    NoteLocked("option " + std::to_string(option) + " " +
               std::to_string(*reinterpret_cast<const int*>(value)));
    return SOCKET_ERROR;  // must be ignored
}

int WSAAPI FakeIoctl(SOCKET, DWORD code, LPVOID in, DWORD, LPVOID, DWORD, LPDWORD, LPWSAOVERLAPPED,
                     LPWSAOVERLAPPED_COMPLETION_ROUTINE) {
    Note("control " + std::to_string(code & 0xFFFF) + " " + std::to_string(*static_cast<const BOOL*>(in)));
    return SOCKET_ERROR;  // must be ignored
}

int WSAAPI FakeReceive(SOCKET, char*, int, int, sockaddr* from, int*) {
    auto* internet = reinterpret_cast<sockaddr_in*>(from);
    internet->sin_port = htons(4711);
    internet->sin_addr.s_addr = htonl(0x0A010203);
    return NoteLocked("receive");
}

int WSAAPI FakeSend(SOCKET, const char*, int, int, const sockaddr*, int) {
    return NoteLocked("send");
}

int WSAAPI FakeSelectEvents(SOCKET, WSAEVENT, long) {
    return fake.result;
}

int WSAAPI FakeLastError() {
    return fake.error;
}

HANDLE WINAPI FakeCreateEvent(LPSECURITY_ATTRIBUTES security, BOOL isManual, BOOL isSet, LPCWSTR name) {
    if (!fake.isFake) {
        static const auto real = RealFunction<decltype(&CreateEventW)>("CreateEventW");
        return real(security, isManual, isSet, name);
    }
    const int event = ++fake.events;
    return std::bit_cast<HANDLE>(
        event == fake.eventThatFails ? UINT_PTR{0} : UINT_PTR{0x500} + static_cast<UINT_PTR>(event));
}

BOOL WINAPI FakeSetEvent(HANDLE event) {
    if (!fake.isFake) {
        static const auto real = RealFunction<decltype(&SetEvent)>("SetEvent");
        return real(event);
    }
    Note("set event");
    return TRUE;
}

BOOL WINAPI FakeCloseHandle(HANDLE handle) {
    if (!fake.isFake) {
        static const auto real = RealFunction<decltype(&CloseHandle)>("CloseHandle");
        return real(handle);
    }
    Note("close event");
    return TRUE;
}

DWORD WINAPI FakeWait(DWORD count, const HANDLE* handles, BOOL forAll, DWORD milliseconds) {
    if (!fake.isFake) {
        static const auto real = RealFunction<decltype(&WaitForMultipleObjects)>("WaitForMultipleObjects");
        return real(count, handles, forAll, milliseconds);
    }
    EXPECT_EQ(fake.locks, 0) << "a close would wait for the network";
    Note("wait " + std::to_string(static_cast<int>(milliseconds)));
    return fake.waitResult;
}

// Looked up each time: a runtime may use such a lock to initialize a static.
void WINAPI CountLock(PSRWLOCK lock) {
    RealFunction<decltype(&AcquireSRWLockExclusive)>("AcquireSRWLockExclusive")(lock);
    fake.locks += fake.isFake ? 1 : 0;
}

void WINAPI CountUnlock(PSRWLOCK lock) {
    fake.locks -= fake.isFake ? 1 : 0;
    RealFunction<decltype(&ReleaseSRWLockExclusive)>("ReleaseSRWLockExclusive")(lock);
}

}  // namespace

// Imported functions are called through these pointers; the linker prefers them to the import library's.
extern "C" {
decltype(&socket) __imp_socket = FakeSocket;
decltype(&closesocket) __imp_closesocket = FakeCloseSocket;
decltype(&bind) __imp_bind = FakeBind;
decltype(&setsockopt) __imp_setsockopt = FakeSetOption;
decltype(&WSAIoctl) __imp_WSAIoctl = FakeIoctl;
decltype(&recvfrom) __imp_recvfrom = FakeReceive;
decltype(&sendto) __imp_sendto = FakeSend;
decltype(&WSAEventSelect) __imp_WSAEventSelect = FakeSelectEvents;
decltype(&WSAGetLastError) __imp_WSAGetLastError = FakeLastError;
decltype(&CreateEventW) __imp_CreateEventW = FakeCreateEvent;
decltype(&SetEvent) __imp_SetEvent = FakeSetEvent;
decltype(&CloseHandle) __imp_CloseHandle = FakeCloseHandle;
decltype(&WaitForMultipleObjects) __imp_WaitForMultipleObjects = FakeWait;
#ifdef __MINGW32__
// Its headers declare these two without dllimport.
void WINAPI AcquireSRWLockExclusive(PSRWLOCK lock) {
    CountLock(lock);
}
void WINAPI ReleaseSRWLockExclusive(PSRWLOCK lock) {
    CountUnlock(lock);
}
#else
decltype(&AcquireSRWLockExclusive) __imp_AcquireSRWLockExclusive = CountLock;
decltype(&ReleaseSRWLockExclusive) __imp_ReleaseSRWLockExclusive = CountUnlock;
#endif
}

namespace {

using Calls = std::vector<std::string>;

class SocketCalls : public testing::Test {
  protected:
    SocketCalls() {
        fake = {};
        fake.isFake = true;
    }
    ~SocketCalls() override {
        EXPECT_EQ(fake.locks, 0) << "a lock was not released";
        fake = {};
    }

    // Opens a socket and removes the calls recorded so far.
    static UdpSocketRef Open() {
        UdpSocketRef opened = OpenUdpSocket();
        EXPECT_TRUE(opened);
        fake.calls.clear();
        return opened;
    }

    static Calls DrainCalls() { return std::exchange(fake.calls, {}); }

    static ReceiveResult Receive(UdpSocket& socket) {
        size_ = 99;
        sender_ = {};
        uint8_t buffer[16];
        return TryReceiveDatagram(socket, buffer, sizeof buffer, &size_, &sender_);
    }

    static SendResult Send(UdpSocket& socket) {
        return TrySendDatagram(socket, {0x0A010203, 162}, nullptr, 0);
    }

    static inline size_t size_ = 0;
    static inline Ipv4Endpoint sender_;
};

// Controls 12 and 15 are SIO_UDP_CONNRESET and SIO_UDP_NETRESET.
TEST_F(SocketCalls, OpeningDisablesIcmpErrorsAndResetReleasesEverything) {
    UdpSocketRef opened = OpenUdpSocket();
    ASSERT_TRUE(opened);
    EXPECT_EQ(DrainCalls(), (Calls{"control 12 0", "control 15 0"}));
    opened.reset();
    EXPECT_EQ(DrainCalls(), (Calls{"close event", "close event", "close socket"}));
}

TEST_F(SocketCalls, AFailedStepMakesOpeningFailAndReleasesTheRest) {
    fake.socket = INVALID_SOCKET;
    EXPECT_FALSE(OpenUdpSocket());
    EXPECT_EQ(DrainCalls(), Calls{});
    fake.socket = kSocket;
    const Calls controls = {"control 12 0", "control 15 0"};
    for (const int failing : {1, 2}) {
        fake.events = 0;
        fake.eventThatFails = failing;
        EXPECT_FALSE(OpenUdpSocket()) << failing;
        EXPECT_EQ(DrainCalls(), (Calls{controls[0], controls[1], "close event", "close socket"})) << failing;
    }
    fake.eventThatFails = 0;
    fake.result = SOCKET_ERROR;  // of WSAEventSelect
    EXPECT_FALSE(OpenUdpSocket());
    EXPECT_EQ(DrainCalls(), (Calls{controls[0], controls[1], "close event", "close event", "close socket"}));
}

TEST_F(SocketCalls, FailedOptionsAreIgnoredAndAFailedBindIsReported) {
    const UdpSocketRef opened = Open();
    RequestReceiveBuffer(*opened, 12345);
    EXPECT_TRUE(BindToAllAddresses(*opened, 162));
    EXPECT_EQ(DrainCalls(), (Calls{"option " + std::to_string(SO_RCVBUF) + " 12345",
                                   "option " + std::to_string(SO_REUSEADDR) + " 1", "bind"}));
    fake.result = SOCKET_ERROR;
    EXPECT_FALSE(BindToAllAddresses(*opened, 162));
}

TEST_F(SocketCalls, ADatagramTooLongForTheBufferFillsIt) {
    const UdpSocketRef opened = Open();
    fake.result = SOCKET_ERROR;
    fake.error = WSAEMSGSIZE;
    EXPECT_EQ(Receive(*opened), ReceiveResult::Datagram);
    EXPECT_EQ(size_, 16U);
    EXPECT_EQ(sender_.address, 0x0A010203U);
    EXPECT_EQ(sender_.port, 4711);
}

TEST_F(SocketCalls, ReceiveErrorsAreMappedAndLeaveSizeAndSenderUnchanged) {
    const UdpSocketRef opened = Open();
    fake.result = SOCKET_ERROR;
    struct Case {
        int error;
        ReceiveResult result;
    };
    constexpr Case kCases[] = {
        {WSAEWOULDBLOCK, ReceiveResult::NothingQueued}, {WSAEINTR, ReceiveResult::Closed},
        {WSAENOTSOCK, ReceiveResult::Closed},           {WSAECONNRESET, ReceiveResult::Failed},
        {WSAENETRESET, ReceiveResult::Failed},          {WSAENOBUFS, ReceiveResult::Failed},
    };
    for (const auto& [error, result] : kCases) {
        fake.error = error;
        EXPECT_EQ(Receive(*opened), result) << error;
        EXPECT_EQ(size_, 99U);
        EXPECT_EQ(sender_.port, 0);
    }
    fake.result = 0;  // with the error of an earlier call
    EXPECT_EQ(Receive(*opened), ReceiveResult::Datagram);
    EXPECT_EQ(size_, 0U);
}

TEST_F(SocketCalls, SendErrorsAreMappedAfterASingleAttempt) {
    const UdpSocketRef opened = Open();
    fake.error = WSAEWOULDBLOCK;  // of an earlier call
    EXPECT_EQ(Send(*opened), SendResult::Sent);
    fake.result = SOCKET_ERROR;
    for (const int error : {WSAEWOULDBLOCK, WSAENOBUFS}) {
        fake.error = error;
        EXPECT_EQ(Send(*opened), SendResult::BufferFull) << error;
    }
    for (const int error : {WSAECONNRESET, WSAEHOSTUNREACH, WSAENETUNREACH}) {
        fake.error = error;
        EXPECT_EQ(Send(*opened), SendResult::Failed) << error;
    }
    EXPECT_EQ(DrainCalls(), Calls(6, "send"));
}

TEST_F(SocketCalls, WaitingForADatagramFailsOnlyIfTheSystemCallFails) {
    const UdpSocketRef opened = Open();
    for (const DWORD result : {WAIT_OBJECT_0, WAIT_OBJECT_0 + 1, DWORD{WAIT_TIMEOUT}}) {
        fake.waitResult = result;
        EXPECT_TRUE(WaitForDatagram(*opened)) << result;
        EXPECT_EQ(DrainCalls(), Calls{"wait -1"});
    }
    for (const DWORD result : {DWORD{WAIT_FAILED}, DWORD{WAIT_ABANDONED_0}}) {
        fake.waitResult = result;
        EXPECT_FALSE(WaitForDatagram(*opened)) << result;
    }
}

// Windows does not signal free buffer space after WSAENOBUFS.
TEST_F(SocketCalls, WaitingForTheSendBufferEndsAfter100MillisecondsAndFailsIfEndedOrOnError) {
    const UdpSocketRef opened = Open();
    for (const DWORD result : {WAIT_OBJECT_0 + 1, DWORD{WAIT_TIMEOUT}}) {
        fake.waitResult = result;
        EXPECT_TRUE(WaitForSendBuffer(*opened)) << result;
        EXPECT_EQ(DrainCalls(), Calls{"wait 100"});
    }
    for (const DWORD result : {DWORD{WAIT_OBJECT_0}, DWORD{WAIT_FAILED}}) {
        fake.waitResult = result;
        EXPECT_FALSE(WaitForSendBuffer(*opened)) << result;
    }
}

TEST_F(SocketCalls, AClosedSocketIsNeverUsedAgain) {
    UdpSocketRef opened = Open();
    CloseUdpSocket(*opened);
    EXPECT_EQ(DrainCalls(), (Calls{"close socket", "set event"}))
        << "frees the port before waking a waiting thread";
    EXPECT_EQ(Receive(*opened), ReceiveResult::Closed);
    EXPECT_EQ(Send(*opened), SendResult::Closed);
    EXPECT_EQ(DrainCalls(), Calls{});
    opened.reset();
    EXPECT_EQ(DrainCalls(), (Calls{"close event", "close event"}));
}

}  // namespace
