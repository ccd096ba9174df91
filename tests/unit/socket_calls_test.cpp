// What a socket asks of the system, under which lock, and what it makes of each answer. The system's calls
// are replaced by linking with ones that note them and answer as a test wants, hence a program of its own.
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "platform/udp_socket.h"
#include "platform/windows/windows_headers.h"

namespace {

constexpr SOCKET kSocket = 0x400;
constexpr UINT_PTR kReadyEvent = 0x501;
constexpr UINT_PTR kEndEvent = 0x502;

// The system as one test wants it, and what was asked of it.
struct System {
    bool isFake = false;  // the run-time's own calls are none of the tests' business
    std::vector<std::string> calls;
    int locks = 0;
    SOCKET socket = kSocket;
    UINT_PTR eventThatFails = 0;
    UINT_PTR events = 0x500;
    int answer = 0;  // of the call that is under test
    int error = 0;
    DWORD waitAnswer = WAIT_OBJECT_0;
} wanted;

void Note(const std::string& call) {
    wanted.calls.push_back(call);
}

// A call that uses the socket, which another thread may close.
void NoteLocked(const std::string& call) {
    EXPECT_EQ(wanted.locks, 1) << call;
    Note(call);
}

template <typename Function>
Function RealFunction(const char* name) {
    return std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

std::string NameOf(HANDLE handle) {
    return std::bit_cast<UINT_PTR>(handle) == kReadyEvent ? "ready"
           : std::bit_cast<UINT_PTR>(handle) == kEndEvent ? "end"
                                                          : "strange";
}

std::string NameOf(SOCKET socket) {
    return socket == kSocket ? "socket" : "strange";
}

std::string AddressText(const sockaddr* address, int size) {
    const auto* internet = reinterpret_cast<const sockaddr_in*>(address);
    EXPECT_EQ(internet->sin_family, AF_INET);
    EXPECT_EQ(size, static_cast<int>(sizeof(sockaddr_in)));
    return std::to_string(ntohl(internet->sin_addr.s_addr)) + ":" + std::to_string(ntohs(internet->sin_port));
}

SOCKET WSAAPI SeeSocket(int family, int type, int protocol) {
    Note("socket " + std::to_string(family) + " " + std::to_string(type) + " " + std::to_string(protocol));
    return wanted.socket;
}

int WSAAPI SeeCloseSocket(SOCKET socket) {
    Note("closesocket " + NameOf(socket));
    return 0;
}

int WSAAPI SeeBind(SOCKET socket, const sockaddr* address, int size) {
    NoteLocked("bind " + NameOf(socket) + " " + AddressText(address, size));
    return wanted.answer;
}

int WSAAPI SeeSetOption(SOCKET socket, int level, int option, const char* value, int size) {
    EXPECT_EQ(level, SOL_SOCKET);
    EXPECT_EQ(size, static_cast<int>(sizeof(int)));
    NoteLocked("setsockopt " + NameOf(socket) + " " + std::to_string(option) + " " +
               std::to_string(*reinterpret_cast<const int*>(value)));
    return SOCKET_ERROR;  // a refusal changes nothing
}

int WSAAPI SeeIoctl(SOCKET socket, DWORD code, LPVOID in, DWORD inSize, LPVOID, DWORD, LPDWORD,
                    LPWSAOVERLAPPED, LPWSAOVERLAPPED_COMPLETION_ROUTINE) {
    EXPECT_EQ(inSize, sizeof(BOOL));
    Note("WSAIoctl " + NameOf(socket) + " " + std::to_string(code & 0xFFFF) + " " +
         std::to_string(*static_cast<const BOOL*>(in)));
    return SOCKET_ERROR;  // a refusal changes nothing
}

int WSAAPI SeeReceive(SOCKET socket, char* buffer, int size, int flags, sockaddr* from, int* fromSize) {
    NoteLocked("recvfrom " + NameOf(socket) + " " + std::to_string(size) + " " + std::to_string(flags));
    EXPECT_EQ(*fromSize, static_cast<int>(sizeof(sockaddr_in)));
    buffer[0] = 'x';
    auto* internet = reinterpret_cast<sockaddr_in*>(from);
    internet->sin_port = htons(4711);
    internet->sin_addr.s_addr = htonl(0x0A010203);
    return wanted.answer;
}

int WSAAPI SeeSend(SOCKET socket, const char* octets, int size, int flags, const sockaddr* to, int toSize) {
    NoteLocked("sendto " + NameOf(socket) + " " + std::string(octets, static_cast<size_t>(size)) + " " +
               std::to_string(flags) + " " + AddressText(to, toSize));
    return wanted.answer;
}

int WSAAPI SeeSelectEvents(SOCKET socket, WSAEVENT event, long events) {
    Note("WSAEventSelect " + NameOf(socket) + " " + NameOf(event) + " " + std::to_string(events));
    return wanted.answer;
}

int WSAAPI TellLastError() {
    return wanted.error;
}

HANDLE WINAPI SeeCreateEvent(LPSECURITY_ATTRIBUTES security, BOOL isManual, BOOL isSet, LPCWSTR name) {
    if (!wanted.isFake) {
        static const auto real = RealFunction<decltype(&CreateEventW)>("CreateEventW");
        return real(security, isManual, isSet, name);
    }
    const UINT_PTR event = ++wanted.events;
    Note("CreateEventW " + std::to_string(isManual) + " " + std::to_string(isSet));
    return std::bit_cast<HANDLE>(event == wanted.eventThatFails ? UINT_PTR{0} : event);
}

BOOL WINAPI SeeSetEvent(HANDLE event) {
    if (!wanted.isFake) {
        static const auto real = RealFunction<decltype(&SetEvent)>("SetEvent");
        return real(event);
    }
    Note("SetEvent " + NameOf(event));
    return TRUE;
}

BOOL WINAPI SeeCloseHandle(HANDLE handle) {
    if (!wanted.isFake) {
        static const auto real = RealFunction<decltype(&CloseHandle)>("CloseHandle");
        return real(handle);
    }
    Note("CloseHandle " + NameOf(handle));
    return TRUE;
}

DWORD WINAPI SeeWait(DWORD count, const HANDLE* handles, BOOL forAll, DWORD milliseconds) {
    if (!wanted.isFake) {
        static const auto real = RealFunction<decltype(&WaitForMultipleObjects)>("WaitForMultipleObjects");
        return real(count, handles, forAll, milliseconds);
    }
    EXPECT_EQ(wanted.locks, 0) << "a close would wait for the network";
    std::string call = "wait";
    for (DWORD index = 0; index < count; ++index) {
        call += " " + NameOf(handles[index]);
    }
    Note(call + (forAll ? " all " : " any ") + std::to_string(static_cast<int>(milliseconds)));
    return wanted.waitAnswer;
}

// Looked up each time: a run-time may take such a lock for making something static.
void WINAPI SeeLock(PSRWLOCK lock) {
    RealFunction<decltype(&AcquireSRWLockExclusive)>("AcquireSRWLockExclusive")(lock);
    wanted.locks += wanted.isFake ? 1 : 0;
}

void WINAPI SeeUnlock(PSRWLOCK lock) {
    wanted.locks -= wanted.isFake ? 1 : 0;
    RealFunction<decltype(&ReleaseSRWLockExclusive)>("ReleaseSRWLockExclusive")(lock);
}

}  // namespace

// What a call of an imported function goes through; the linker takes these before the import libraries'.
extern "C" {
decltype(&socket) __imp_socket = SeeSocket;
decltype(&closesocket) __imp_closesocket = SeeCloseSocket;
decltype(&bind) __imp_bind = SeeBind;
decltype(&setsockopt) __imp_setsockopt = SeeSetOption;
decltype(&WSAIoctl) __imp_WSAIoctl = SeeIoctl;
decltype(&recvfrom) __imp_recvfrom = SeeReceive;
decltype(&sendto) __imp_sendto = SeeSend;
decltype(&WSAEventSelect) __imp_WSAEventSelect = SeeSelectEvents;
decltype(&WSAGetLastError) __imp_WSAGetLastError = TellLastError;
decltype(&CreateEventW) __imp_CreateEventW = SeeCreateEvent;
decltype(&SetEvent) __imp_SetEvent = SeeSetEvent;
decltype(&CloseHandle) __imp_CloseHandle = SeeCloseHandle;
decltype(&WaitForMultipleObjects) __imp_WaitForMultipleObjects = SeeWait;
#ifdef __MINGW32__
// Its headers declare these two as functions of the program's own.
void WINAPI AcquireSRWLockExclusive(PSRWLOCK lock) {
    SeeLock(lock);
}
void WINAPI ReleaseSRWLockExclusive(PSRWLOCK lock) {
    SeeUnlock(lock);
}
#else
decltype(&AcquireSRWLockExclusive) __imp_AcquireSRWLockExclusive = SeeLock;
decltype(&ReleaseSRWLockExclusive) __imp_ReleaseSRWLockExclusive = SeeUnlock;
#endif
}

namespace {

using Calls = std::vector<std::string>;

// The two controls keep ICMP errors away from the socket.
const Calls kOpened = {"socket 2 2 17",    "WSAIoctl socket 12 0", "WSAIoctl socket 15 0",
                       "CreateEventW 0 0", "CreateEventW 1 0",     "WSAEventSelect socket ready 3"};

class SocketCalls : public testing::Test {
  protected:
    SocketCalls() {
        wanted = {};
        wanted.isFake = true;
    }
    ~SocketCalls() override {
        EXPECT_EQ(wanted.locks, 0) << "a lock was left taken";
        wanted = {};
    }

    // A socket whose making is noted no longer.
    static UdpSocketRef Open() {
        UdpSocketRef opened = OpenUdpSocket();
        EXPECT_TRUE(opened);
        wanted.calls.clear();
        return opened;
    }

    static Calls TakeCalls() { return std::exchange(wanted.calls, {}); }

    static ReceiveResult Take(UdpSocket& socket) {
        taken_ = 99;
        sender_ = {};
        return TryReceiveDatagram(socket, buffer_, sizeof buffer_, &taken_, &sender_);
    }

    static SendResult Send(UdpSocket& socket, const std::string& octets) {
        return TrySendDatagram(socket, {0x0A010203, 162}, reinterpret_cast<const uint8_t*>(octets.data()),
                               octets.size());
    }

    static inline uint8_t buffer_[16] = {};
    static inline size_t taken_ = 0;
    static inline Ipv4Endpoint sender_;
};

TEST_F(SocketCalls, AnOpenedSocketSignalsWhatItGetsAndGivesAllBackInTheEnd) {
    UdpSocketRef opened = OpenUdpSocket();
    EXPECT_TRUE(opened);
    EXPECT_EQ(TakeCalls(), kOpened);
    opened.reset();
    EXPECT_EQ(TakeCalls(), (Calls{"CloseHandle end", "CloseHandle ready", "closesocket socket"}));
}

TEST_F(SocketCalls, WithoutASocketAnEventOrTheirTieThereIsNoneAndNothingIsKept) {
    wanted.socket = INVALID_SOCKET;
    EXPECT_FALSE(OpenUdpSocket());
    EXPECT_EQ(TakeCalls(), Calls{kOpened[0]});

    wanted.socket = kSocket;
    wanted.eventThatFails = kReadyEvent;
    EXPECT_FALSE(OpenUdpSocket());
    EXPECT_EQ(TakeCalls(), (Calls{kOpened[0], kOpened[1], kOpened[2], kOpened[3], kOpened[4],
                                  "CloseHandle end", "closesocket socket"}));

    wanted.events = 0x500;
    wanted.eventThatFails = kEndEvent;
    EXPECT_FALSE(OpenUdpSocket());
    EXPECT_EQ(TakeCalls(), (Calls{kOpened[0], kOpened[1], kOpened[2], kOpened[3], kOpened[4],
                                  "CloseHandle ready", "closesocket socket"}));

    wanted.events = 0x500;
    wanted.eventThatFails = 0;
    wanted.answer = SOCKET_ERROR;
    EXPECT_FALSE(OpenUdpSocket());
    EXPECT_EQ(TakeCalls(), (Calls{kOpened[0], kOpened[1], kOpened[2], kOpened[3], kOpened[4], kOpened[5],
                                  "CloseHandle end", "CloseHandle ready", "closesocket socket"}));
}

TEST_F(SocketCalls, BindingTakesEveryAddressEvenWhenAnotherHoldsIt) {
    const UdpSocketRef opened = Open();
    EXPECT_TRUE(BindToAllAddresses(*opened, 162));
    EXPECT_EQ(TakeCalls(),
              (Calls{"setsockopt socket " + std::to_string(SO_REUSEADDR) + " 1", "bind socket 0:162"}));
    wanted.answer = SOCKET_ERROR;
    EXPECT_FALSE(BindToAllAddresses(*opened, 162));
}

TEST_F(SocketCalls, TheReceiveBufferIsAskedFor) {
    const UdpSocketRef opened = Open();
    RequestReceiveBuffer(*opened, 12345);
    EXPECT_EQ(TakeCalls(), Calls{"setsockopt socket " + std::to_string(SO_RCVBUF) + " 12345"});
}

TEST_F(SocketCalls, ADatagramOfAnySizeComesWithItsSender) {
    const UdpSocketRef opened = Open();
    for (const int size : {0, 1, 16}) {
        wanted.answer = size;
        wanted.error = WSAECONNRESET;  // of an earlier call
        EXPECT_EQ(Take(*opened), ReceiveResult::Datagram);
        EXPECT_EQ(TakeCalls(), Calls{"recvfrom socket 16 0"});
        EXPECT_EQ(taken_, static_cast<size_t>(size));
        EXPECT_EQ(sender_.address, 0x0A010203U);
        EXPECT_EQ(sender_.port, 4711);
    }
}

TEST_F(SocketCalls, ADatagramTooLongForTheBufferFillsIt) {
    const UdpSocketRef opened = Open();
    wanted.answer = SOCKET_ERROR;
    wanted.error = WSAEMSGSIZE;
    EXPECT_EQ(Take(*opened), ReceiveResult::Datagram);
    EXPECT_EQ(taken_, sizeof buffer_);
    EXPECT_EQ(sender_.address, 0x0A010203U);
}

TEST_F(SocketCalls, AReceivingThatFailsIsToldByItsError) {
    const UdpSocketRef opened = Open();
    wanted.answer = SOCKET_ERROR;
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
        wanted.error = error;
        EXPECT_EQ(Take(*opened), result) << error;
        EXPECT_EQ(taken_, 99U) << "untouched";
        EXPECT_EQ(sender_.port, 0) << "untouched";
    }
}

TEST_F(SocketCalls, ASendingIsOneAttemptAndIsToldByItsError) {
    const UdpSocketRef opened = Open();
    for (const char* octets : {"abc", ""}) {
        wanted.answer = static_cast<int>(std::string(octets).size());
        wanted.error = WSAEWOULDBLOCK;  // of an earlier call
        EXPECT_EQ(Send(*opened, octets), SendResult::Sent);
        EXPECT_EQ(TakeCalls(), Calls{std::string("sendto socket ") + octets + " 0 167838211:162"});
    }
    wanted.answer = SOCKET_ERROR;
    for (const int error : {WSAEWOULDBLOCK, WSAENOBUFS}) {
        wanted.error = error;
        EXPECT_EQ(Send(*opened, "abc"), SendResult::NoRoom) << error;
    }
    for (const int error : {WSAECONNRESET, WSAEHOSTUNREACH, WSAENETUNREACH}) {
        wanted.error = error;
        EXPECT_EQ(Send(*opened, "abc"), SendResult::Failed) << error;
    }
}

TEST_F(SocketCalls, WaitingForADatagramHasNoLimitAndAnyAnswerButARefusalIsALook) {
    const UdpSocketRef opened = Open();
    for (const DWORD answer : {WAIT_OBJECT_0, WAIT_OBJECT_0 + 1, DWORD{WAIT_TIMEOUT}}) {
        wanted.waitAnswer = answer;
        EXPECT_TRUE(WaitForDatagram(*opened)) << answer;
        EXPECT_EQ(TakeCalls(), Calls{"wait end ready any -1"});
    }
    for (const DWORD answer : {DWORD{WAIT_FAILED}, DWORD{WAIT_ABANDONED_0}}) {
        wanted.waitAnswer = answer;
        EXPECT_FALSE(WaitForDatagram(*opened)) << answer;
    }
}

TEST_F(SocketCalls, WaitingForRoomRetriesAfter100MillisecondsAndEndsWithTheWaiting) {
    const UdpSocketRef opened = Open();
    for (const DWORD answer : {WAIT_OBJECT_0 + 1, DWORD{WAIT_TIMEOUT}}) {
        wanted.waitAnswer = answer;
        EXPECT_TRUE(WaitForRoom(*opened)) << answer;
        EXPECT_EQ(TakeCalls(), Calls{"wait end ready any 100"});
    }
    for (const DWORD answer : {DWORD{WAIT_OBJECT_0}, DWORD{WAIT_FAILED}}) {
        wanted.waitAnswer = answer;
        EXPECT_FALSE(WaitForRoom(*opened)) << answer;
    }
}

TEST_F(SocketCalls, AClosedSocketIsNeverTouchedAgain) {
    UdpSocketRef opened = Open();
    CloseUdpSocket(*opened);
    EXPECT_EQ(TakeCalls(), (Calls{"closesocket socket", "SetEvent end"})) << "the port first, then who waits";
    CloseUdpSocket(*opened);
    EXPECT_EQ(TakeCalls(), Calls{"SetEvent end"});
    EXPECT_EQ(Take(*opened), ReceiveResult::Closed);
    EXPECT_EQ(Send(*opened, "abc"), SendResult::Closed);
    EXPECT_EQ(TakeCalls(), Calls{});
    opened.reset();
    EXPECT_EQ(TakeCalls(), (Calls{"CloseHandle end", "CloseHandle ready"}));
}

TEST_F(SocketCalls, AnEndOfTheWaitingClosesNothing) {
    const UdpSocketRef opened = Open();
    EndWaiting(*opened);
    EXPECT_EQ(TakeCalls(), Calls{"SetEvent end"});
    wanted.answer = 3;
    EXPECT_EQ(Send(*opened, "abc"), SendResult::Sent);
}

}  // namespace
