// What waits in a socket together: how it is taken, and that nobody can tell from the files or the wire. The
// file layer is replaced by linking, so that each write is seen.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/name_store.h"
#include "tests/support/mib_tables.h"
#include "tests/support/sample_messages.h"
#include "tests/support/stamps.h"
#include "tests/support/watched_files.h"
#include "trap/listener_thread.h"
#include "trap/receive_loop.h"
#include "trap/server_state.h"
#include "trap/trap_thread.h"
#include "trap/trap_turn.h"

namespace {

constexpr uint32_t kLoopback = 0x7F000001;
constexpr Ipv4Endpoint kSender = {0x0A010203, 49152};
constexpr LocalTime kTime = {2026, 3, 7, 9, 5, 2, 47};
constexpr char kFrom[] = "2026-03-07 09:05:02.047       FROM: 10.1.2.3\r\r\n";

// A bound socket and its port: ports are tried from one up, since a socket here does not tell its own.
struct BoundSocket {
    BoundSocket() : socket(OpenUdpSocket()) {
        static uint16_t next = 21000;
        while (!BindToAllAddresses(*socket, next)) {
            ++next;
        }
        port = next++;
    }
    ~BoundSocket() { CloseUdpSocket(*socket); }
    BoundSocket(const BoundSocket&) = delete;
    BoundSocket& operator=(const BoundSocket&) = delete;

    void SendTo(uint16_t target, const Octets& octets) const {
        EXPECT_EQ(SendDatagram(*socket, {kLoopback, target}, octets.data(), octets.size()), SendResult::Sent);
    }

    // Everything that waits, in order.
    std::vector<Octets> TakeAll() const {
        std::vector<Octets> all;
        Octets octets(65535);
        size_t size = 0;
        Ipv4Endpoint sender;
        while (TakeDatagram(*socket, octets.data(), octets.size(), &size, &sender) ==
               ReceiveResult::Datagram) {
            all.emplace_back(octets.begin(), octets.begin() + static_cast<ptrdiff_t>(size));
        }
        return all;
    }

    UdpSocketRef socket;
    uint16_t port = 0;
};

class Turns : public ::testing::Test {
  protected:
    Turns() { EXPECT_TRUE(StartSocketLibrary()); }
    ~Turns() override { StopSocketLibrary(); }

    void SetUp() override {
        Files.Reset();
        AppPaths.trapFilePath = L"\\SNMP.txt";
        AppPaths.logFilePath = L"\\log.txt";
        ForwardingSettings.forwardingEnabled = false;
        ServerState.running = true;
    }
    void TearDown() override {
        ServerState.running = false;
        Files.Reset();
        ForwardingSettings.forwardingEnabled = false;
    }

    static std::string TrapFile() { return Files.ReadOctetsOf(AppPaths.trapFilePath); }
    static std::string LogFile() { return Files.ReadOctetsOf(AppPaths.logFilePath); }

    // The log without its stamps, whose shape is checked.
    static std::vector<std::string> LogLines() {
        std::vector<std::string> lines;
        const std::string octets = LogFile();
        for (size_t start = 0; start < octets.size();) {
            const size_t end = octets.find("\r\r\n", start);
            EXPECT_TRUE(IsStamp(octets.substr(start, kStampLength))) << octets.substr(start);
            lines.push_back(octets.substr(start + kStampLength, end - start - kStampLength));
            start = end + 3;
        }
        return lines;
    }

    FreshNameStore store_;
};

// ---- Taking

// Counts what it is given; as much room as a test says.
struct CountingTurn : ReceiveTurn {
    std::span<uint8_t> Room() override {
        return taken < most ? std::span<uint8_t>(buffer) : std::span<uint8_t>();
    }
    void Take(size_t, const Ipv4Endpoint&) override {
        ++taken;
        if (onTake) {
            onTake();
        }
    }
    void Clear() override { taken = 0; }

    std::array<uint8_t, 64> buffer{};
    size_t taken = 0;
    size_t most = 1000;
    std::function<void()> onTake;
};

class Taking : public Turns {
  protected:
    void Send(size_t count) {
        for (size_t sent = 0; sent < count; ++sent) {
            sender_.SendTo(receiver_.port, {1});
        }
    }

    // Receives until `end` says so after a turn; returns how much each turn held, the empty ones left out.
    std::vector<size_t> ReceiveUntil(const std::function<bool()>& end) {
        std::vector<size_t> turns;
        const auto work = [&] {
            if (turn_.taken > 0) {
                turns.push_back(turn_.taken);
            }
            if (end()) {
                ServerState.running = false;
            }
        };
        ReceiveWhileRunning(*receiver_.socket, turn_, work);
        return turns;
    }

    CountingTurn turn_;
    BoundSocket sender_;
    BoundSocket receiver_;
};

TEST_F(Taking, WhatWaitsIsOneTurnUpToItsRoom) {
    turn_.most = 8;
    Send(20);
    size_t works = 0;
    EXPECT_EQ(ReceiveUntil([&] { return ++works == 3; }), (std::vector<size_t>{8, 8, 4}));
}

TEST_F(Taking, ADatagramThatHadToBeWaitedForIsATurnOfItsOwn) {
    bool sent = false;
    size_t taken = 0;
    const std::vector<size_t> turns = ReceiveUntil([&] {
        if (!std::exchange(sent, true)) {
            // Nothing waited: this turn is empty. Two arrive together, but the socket was empty before them.
            Send(2);
        }
        taken += turn_.taken;
        return taken == 2;
    });
    EXPECT_EQ(turns, (std::vector<size_t>{1, 1}));
}

TEST_F(Taking, WhatWasTakenIsWorkedOnAlthoughTheSocketIsClosedMeanwhile) {
    Send(5);
    turn_.onTake = [&] {
        if (turn_.taken == 2) {
            CloseUdpSocket(*receiver_.socket);
        }
    };
    EXPECT_EQ(ReceiveUntil([] { return false; }), (std::vector<size_t>{2})) << "and it ended by itself";
}

TEST_F(Taking, WhatTheWorkThrowsCostsItsTurnOnly) {
    turn_.most = 2;
    Send(6);
    size_t works = 0;
    const auto work = [&] {
        ++works;
        EXPECT_EQ(turn_.taken, 2U) << "the turn before was cleared";
        ServerState.running = works < 3;
        throw std::bad_alloc();
    };
    ReceiveWhileRunning(*receiver_.socket, turn_, work);
    EXPECT_EQ(works, 3U);
}

TEST_F(Taking, WhatTakeThrowsEndsNothing) {
    Send(3);
    turn_.onTake = [] { throw std::bad_alloc(); };
    EXPECT_EQ(ReceiveUntil([] { return true; }), (std::vector<size_t>{3}));
}

TEST_F(Taking, AStoppedReceiverTakesNothing) {
    ServerState.running = false;
    Send(1);
    EXPECT_TRUE(ReceiveUntil([] { return true; }).empty());
}

// ---- The turn on UDP 162

class TrapTurns : public Turns {
  protected:
    // As from the socket: into the turn's room.
    void Take(size_t count, uint8_t fill, const Ipv4Endpoint& sender = kSender) {
        const std::span<uint8_t> room = turn_->Room();
        ASSERT_GE(room.size(), TrapTurn::kLargestDatagram);
        std::fill_n(room.begin(), count, fill);
        turn_->Take(count, sender);
    }

    std::unique_ptr<TrapTurn> turn_ = std::make_unique<TrapTurn>();
};

TEST_F(TrapTurns, KeepEachDatagramWithItsSenderAndTime) {
    Take(3, 7);
    Take(0, 0, {kLoopback, 162});
    Take(2, 9);
    const std::span<TrapArrival> arrivals = turn_->arrivals();
    ASSERT_EQ(arrivals.size(), 3U);
    EXPECT_EQ(Octets(arrivals[0].octets, arrivals[0].octets + arrivals[0].count), (Octets{7, 7, 7}));
    EXPECT_EQ(arrivals[1].count, 0U);
    EXPECT_EQ(arrivals[1].sender.address, kLoopback);
    EXPECT_EQ(Octets(arrivals[2].octets, arrivals[2].octets + arrivals[2].count), (Octets{9, 9}));
    EXPECT_GE(arrivals[2].time.year, 2026U);
    turn_->Clear();
    EXPECT_TRUE(turn_->arrivals().empty());
}

TEST_F(TrapTurns, NoteTheLatestArrivalAsItIsTaken) {
    ServerState.lastTrapTick = 0;
    Take(1, 0);
    EXPECT_NE(ServerState.lastTrapTick, 0U);
    EXPECT_EQ(CopyLastTrapSender(), L"10.1.2.3:49152");
    Take(1, 0, {kLoopback, 162});
    EXPECT_EQ(CopyLastTrapSender(), L"127.0.0.1:162");
}

TEST_F(TrapTurns, AreFullAt256Datagrams) {
    for (int taken = 0; taken < 256; ++taken) {
        Take(0, 0);
    }
    EXPECT_TRUE(turn_->Room().empty());
    turn_->Clear();
    EXPECT_FALSE(turn_->Room().empty());
}

TEST_F(TrapTurns, AreFullWhenTheLargestDatagramNoLongerFits) {
    Take(TrapTurn::kLargestDatagram, 1);
    Take(1, 2);
    EXPECT_TRUE(turn_->Room().empty());
    EXPECT_EQ(turn_->arrivals().size(), 2U);
    EXPECT_EQ(turn_->arrivals()[0].octets[TrapTurn::kLargestDatagram - 1], 1) << "untouched by the second";
}

TEST_F(TrapTurns, TwoOfTheLargestFitAndTwoMoreAfterThem) {
    for (int turn = 0; turn < 2; ++turn) {
        Take(TrapTurn::kLargestDatagram, 1);
        Take(TrapTurn::kLargestDatagram, 2);
        EXPECT_TRUE(turn_->Room().empty());
        EXPECT_EQ(turn_->arrivals().size(), 2U);
        turn_->Clear();
    }
}

// ---- Recording

class Recording : public Turns {
  protected:
    std::vector<TrapArrival> ArrivalsOf(const std::vector<SampleMessage>& samples) {
        std::vector<TrapArrival> arrivals;
        for (const SampleMessage& sample : samples) {
            const Octets& octets = kept_.emplace_back(sample.octets);
            arrivals.push_back({octets.data(), octets.size(), kSender, kTime});
        }
        return arrivals;
    }

    static std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

    static std::string OnDisk(const SampleMessage& sample) {
        std::string octets;
        for (const wchar_t character : BuildExpectedBody(sample)) {
            octets.append(character == L'\n' ? "\r" : "").push_back(static_cast<char>(character));
        }
        return kFrom + octets;
    }

    TrapWorkspace workspace_;

  private:
    std::list<Octets> kept_;  // what the arrivals point to
};

TEST_F(Recording, AWholeTurnReadsAsItsTrapsOneByOne) {
    std::string expected;
    for (const SampleMessage& sample : SampleMessages()) {
        expected += OnDisk(sample);
    }
    std::vector<TrapArrival> arrivals = ArrivalsOf(SampleMessages());
    RecordTraps(arrivals, nullptr, workspace_);
    EXPECT_EQ(TrapFile(), expected);
    EXPECT_EQ(LogLines(), std::vector<std::string>(arrivals.size(), "  Trap received (10.1.2.3)."));

    Files.Reset();
    for (TrapArrival& arrival : arrivals) {
        RecordTraps(std::span(&arrival, 1), nullptr, workspace_);
    }
    EXPECT_EQ(TrapFile(), expected);
    EXPECT_EQ(LogLines(), std::vector<std::string>(arrivals.size(), "  Trap received (10.1.2.3)."));
}

TEST_F(Recording, ATurnOpensEachFileOnce) {
    std::vector<std::wstring> writes;
    Files.onAppend = [&](const std::wstring& path, std::string_view) { writes.push_back(path); };
    std::vector<TrapArrival> arrivals = ArrivalsOf(SampleMessages());
    ASSERT_GT(arrivals.size(), 10U);
    RecordTraps(arrivals, nullptr, workspace_);
    EXPECT_EQ(writes, (std::vector<std::wstring>{AppPaths.trapFilePath, AppPaths.logFilePath}));
}

TEST_F(Recording, EachTrapIsRecordedAndAnnouncedWithItsOwnSender) {
    std::vector<TrapArrival> arrivals = ArrivalsOf({FindSample("v2_empty_pdu"), FindSample("v2_empty_pdu")});
    arrivals[0].sender.address = kLoopback;
    RecordTraps(arrivals, nullptr, workspace_);
    const std::string octets = TrapFile();
    EXPECT_LT(octets.find("FROM: 127.0.0.1\r"), octets.find("FROM: 10.1.2.3\r"));
    EXPECT_EQ(LogLines(),
              (std::vector<std::string>{"  Trap received (127.0.0.1).", "  Trap received (10.1.2.3)."}));
}

// As when FileLock is refused, once with the records and once with the lines.
TEST_F(Recording, WhatAWriteThrowsCostsItsTurnAndLeavesNothingToTheNext) {
    for (const std::wstring& refused : {AppPaths.trapFilePath, AppPaths.logFilePath}) {
        Files.Reset();
        Files.onAppend = [&refused](const std::wstring& path, std::string_view) {
            if (path == refused) {
                throw std::bad_alloc();
            }
        };
        std::vector<TrapArrival> lost = ArrivalsOf({FindSample("v1_link_down")});
        EXPECT_THROW(RecordTraps(lost, nullptr, workspace_), std::bad_alloc);
        Files.Reset();
        std::vector<TrapArrival> next = ArrivalsOf({FindSample("v2_link_down")});
        RecordTraps(next, nullptr, workspace_);
        EXPECT_EQ(TrapFile(), OnDisk(FindSample("v2_link_down")));
        EXPECT_EQ(LogLines(), std::vector<std::string>{"  Trap received (10.1.2.3)."});
    }
}

TEST_F(Recording, NothingToRecordMakesNoFile) {
    RecordTraps({}, nullptr, workspace_);
    EXPECT_FALSE(Files.Has(AppPaths.trapFilePath));
    EXPECT_FALSE(Files.Has(AppPaths.logFilePath));
}

// The name ends the record at the character that the file cannot hold; the next record goes on in that line.
TEST_F(Recording, ARecordThatIsCutCutsNoOther) {
    {
        const std::lock_guard lock(MibStoreLock);
        StoreNamedOid(L"na\u20ACme", L"1.3.6.1.4.1.1");
    }
    const SampleMessage cut = {"", EncodeV2Trap({{"1.3.6.1.4.1.1", EncodeInteger(1)}}), {}};
    std::vector<TrapArrival> arrivals = ArrivalsOf({cut, FindSample("v2_link_down"), cut});
    RecordTraps(arrivals, nullptr, workspace_);
    const std::string part = std::string(kFrom) + "---> [1] 1.3.6.1.4.1.1 (na";
    EXPECT_EQ(TrapFile(), part + OnDisk(FindSample("v2_link_down")) + part);
}

TEST_F(Recording, EachTrapIsForwardedInOrderAfterBothWrites) {
    const BoundSocket target;
    const UdpSocketRef forwarder = OpenUdpSocket();
    ReplaceForwarding(true, L"127.0.0.1", target.port);
    std::vector<std::wstring> writes;
    Files.onAppend = [&](const std::wstring& path, std::string_view) {
        writes.push_back(path);
        EXPECT_TRUE(target.TakeAll().empty()) << "forwarded before it was recorded and announced";
    };
    std::vector<TrapArrival> arrivals = ArrivalsOf(SampleMessages());
    RecordTraps(arrivals, forwarder.get(), workspace_);
    EXPECT_EQ(writes, (std::vector<std::wstring>{AppPaths.trapFilePath, AppPaths.logFilePath}));
    const std::vector<Octets> forwarded = target.TakeAll();
    ASSERT_EQ(forwarded.size(), arrivals.size());
    for (size_t index = 0; index < forwarded.size(); ++index) {
        EXPECT_EQ(forwarded[index], SampleMessages()[index].octets) << SampleMessages()[index].name;
    }
    CloseUdpSocket(*forwarder);
}

TEST_F(Recording, ASendThatFailsIsALineForEachTrapBehindTheTurnInOneWrite) {
    const UdpSocketRef forwarder = OpenUdpSocket();
    ReplaceForwarding(true, L"255.255.255.255", 9);  // broadcast is refused to an ordinary socket
    std::vector<TrapArrival> arrivals = ArrivalsOf({FindSample("v2_link_down"), FindSample("v1_link_down")});
    size_t writes = 0;
    Files.onAppend = [&writes](const std::wstring&, std::string_view) { ++writes; };
    RecordTraps(arrivals, forwarder.get(), workspace_);
    EXPECT_EQ(writes, 3U) << "the records, their announcements, the failures";
    EXPECT_EQ(LogLines(), (std::vector<std::string>{
                              "  Trap received (10.1.2.3).", "  Trap received (10.1.2.3).",
                              "  Forwarding failed (sendto error).", "  Forwarding failed (sendto error)."}));
    CloseUdpSocket(*forwarder);
}

// Longer than any that UDP brings over IPv4.
TEST_F(Recording, ADatagramThatFillsTheBufferIsRecordedToItsLastOctet) {
    constexpr size_t kText = 65'471;
    const Octets full = EncodeV2Trap({{"1.3.6.1.4.1.1", EncodeOctetString(std::string(kText, 'x'))},
                                      {"1.3.6.1.4.1.2", EncodeInteger(4711)}});
    ASSERT_EQ(full.size(), TrapTurn::kLargestDatagram);
    std::vector<TrapArrival> turn = {{full.data(), full.size(), kSender, kTime}};
    RecordTraps(turn, nullptr, workspace_);
    EXPECT_EQ(TrapFile(), std::string(kFrom) + "---> [1] 1.3.6.1.4.1.1  OCTET STRING = \"" +
                              std::string(kText, 'x') +
                              "\"\r\r\n---> [2] 1.3.6.1.4.1.2  INTEGER = 4711\r\r\n\r\r\n");
}

TEST_F(Recording, AGiantsMemoryIsGivenBackAndAnOrdinaryTurnsIsKept) {
    std::vector<TrapArrival> ordinary = ArrivalsOf({FindSample("v2_eight_bindings")});
    RecordTraps(ordinary, nullptr, workspace_);
    EXPECT_GT(workspace_.records.capacity(), 100U);
    EXPECT_GT(workspace_.record.capacity(), 100U);
    const Octets giant = EncodeV2Trap({{"1.3.6.1.4.1.1", EncodeOctetString(std::string(60'000, 'x'))}});
    std::vector<TrapArrival> turn = {ordinary[0], {giant.data(), giant.size(), kSender, kTime}, ordinary[0]};
    RecordTraps(turn, nullptr, workspace_);
    EXPECT_LT(workspace_.records.capacity(), 100U);
    EXPECT_LT(workspace_.record.capacity(), 100U);
    EXPECT_EQ(workspace_.bindings.begin(), nullptr) << "no list is kept either";
}

TEST_F(Recording, AGiantIsWhatDoesNotFitIntoOneEthernetFrame) {
    const auto trapOf = [](size_t size) {
        const auto build = [](size_t text) {
            return EncodeV2Trap({{"1.3.6.1.4.1.1", EncodeOctetString(std::string(text, 'x'))}});
        };
        return build(1000 + size - build(1000).size());
    };
    for (const size_t size : {1500U, 1501U}) {
        const Octets octets = trapOf(size);
        ASSERT_EQ(octets.size(), size);
        std::vector<TrapArrival> turn = {{octets.data(), octets.size(), kSender, kTime}};
        RecordTraps(turn, nullptr, workspace_);
        EXPECT_EQ(workspace_.records.capacity() > 100, size == 1500) << size;
    }
}

// ---- UDP 161

TEST_F(Turns, WhatWaitsOn161IsLoggedInOneWriteALineEach) {
    const BoundSocket sender;
    const BoundSocket listener;
    for (int sent = 0; sent < 20; ++sent) {
        sender.SendTo(listener.port, Octets(static_cast<size_t>(sent) * 300, 0x30));
    }
    std::vector<std::string> writes;
    Files.onAppend = [&](const std::wstring&, std::string_view octets) {
        writes.emplace_back(octets);
        ServerState.running = writes.size() < 2;  // the starting line and the turn
    };
    ListenerThread(*listener.socket);
    ASSERT_EQ(writes.size(), 3U) << "the last is the stopping line";
    std::vector<std::string> lines = LogLines();
    ASSERT_EQ(lines.size(), 22U);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "  Datagram on UDP 161 from 127.0.0.1."), 20);
}

}  // namespace
