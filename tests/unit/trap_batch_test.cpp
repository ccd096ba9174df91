// Datagrams that are received and handled as a batch: files, log and forwarded datagrams are the same as if
// each were handled alone. Sockets, clock and files are scripted: a test chooses when a send buffer is full,
// a file is refused or a stop begins.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "mib/name_store.h"
#include "tests/support/fake_system.h"
#include "tests/support/mib_tables.h"
#include "tests/support/sample_messages.h"
#include "tests/support/stamps.h"
#include "tests/support/watched_files.h"
#include "trap/listener_thread.h"
#include "trap/receive_loop.h"
#include "trap/server_state.h"
#include "trap/trap_batch.h"
#include "trap/trap_thread.h"

namespace {

using Lines = std::vector<std::string>;

constexpr Ipv4Endpoint kSender = {0x0A010203, 49152};
constexpr char kFrom[] = "2026-03-07 09:05:02.047       FROM: 10.1.2.3\r\r\n";
constexpr char kReceived[] = "Trap received (10.1.2.3).";
constexpr char kFailed[] = "Forwarding failed (sendto error).";
constexpr char kOn161[] = "Datagram on UDP 161 from 10.1.2.3.";

class Batches : public ::testing::Test {
  protected:
    Batches() {
        Fake = {};
        Files.Reset();
        AppPaths.trapFilePath = L"\\SNMP.txt";
        AppPaths.logFilePath = L"\\log.txt";
        ReplaceForwarding(false, L"127.0.0.1", 162);
        ServerState.running = true;
    }
    ~Batches() override {
        ServerState.running = false;
        ReplaceForwarding(false, L"127.0.0.1", 162);
        Files.Reset();
        Fake = {};
        AppPaths = {};
    }

    static void Queue(size_t count, const Octets& octets = {1}) {
        Fake.receptions.insert(Fake.receptions.end(), count, {ReceiveResult::Datagram, octets, kSender});
    }

    // Clears the running flag after that many datagrams.
    static void StopAfter(size_t datagrams) {
        Fake.onReceive = [received = size_t{0}, datagrams]() mutable {
            ServerState.running = ++received < datagrams;
        };
    }

    static std::string TrapFile() { return Files.ReadOctetsOf(AppPaths.trapFilePath); }

    // The messages of the log. Also checks the stamps.
    static Lines LogLines() {
        Lines lines;
        const std::string octets = Files.ReadOctetsOf(AppPaths.logFilePath);
        for (size_t start = 0; start < octets.size();) {
            const size_t end = octets.find("\r\r\n", start);
            EXPECT_TRUE(IsStamp(octets.substr(start, kStampLength))) << octets.substr(start);
            lines.push_back(octets.substr(start + kStampLength + 2, end - start - kStampLength - 2));
            start = end + 3;
        }
        return lines;
    }

    UdpSocket socket_{"socket"};
    FreshNameStore store_;
};

// ---- Receiving

struct CountingBatch : ReceiveBatch {
    std::span<uint8_t> FreeSpace() override {
        return arrivals < most ? std::span<uint8_t>(buffer) : std::span<uint8_t>();
    }
    void AddArrival(size_t, const Ipv4Endpoint&) override { ++arrivals; }
    void Process() override {
        if (arrivals > 0) {
            sizes.push_back(std::exchange(arrivals, 0));
        }
    }

    std::array<uint8_t, 64> buffer{};
    size_t arrivals = 0;
    size_t most = 1000;
    std::vector<size_t> sizes;
};

class Receiving : public Batches {
  protected:
    std::vector<size_t> ReceiveAll() {
        ReceiveWhileRunning(socket_, batch_);
        return batch_.sizes;
    }

    CountingBatch batch_;
};

using Sizes = std::vector<size_t>;

TEST_F(Receiving, QueuedDatagramsFormBatchesUntilTheSocketIsClosed) {
    batch_.most = 8;
    Queue(20);
    EXPECT_EQ(ReceiveAll(), (Sizes{8, 8, 4}));
    EXPECT_FALSE(Fake.waitedForClose) << "a socket that the system closed would never be closed again";
}

TEST_F(Receiving, TheFirstDatagramAfterAWaitIsABatchOfOne) {
    Fake.receptions.push_back({ReceiveResult::NothingQueued});
    Queue(3);
    EXPECT_EQ(ReceiveAll(), (Sizes{1, 2}));
    EXPECT_EQ(Fake.steps, Lines{"wait for a datagram"});
}

TEST_F(Receiving, NothingIsReceivedAfterAStop) {
    Queue(20);
    StopAfter(3);
    EXPECT_EQ(ReceiveAll(), Sizes{3});
    EXPECT_EQ(Fake.receptions.size(), 17U);
    EXPECT_TRUE(Fake.waitedForClose) << "the worker would log its end before the stop logs its beginning";
}

TEST_F(Receiving, AReceiveErrorIsRetriedAfterTenMillisecondsWithoutLimitOrLogLine) {
    constexpr size_t kErrors = 1000;
    Fake.receptions.assign(kErrors, {ReceiveResult::Failed});
    Queue(1);
    EXPECT_EQ(ReceiveAll(), Sizes{1});
    EXPECT_EQ(Fake.steps, Lines(kErrors, "sleep 10 ms"));
    EXPECT_EQ(LogLines(), Lines{});
}

TEST_F(Receiving, ARefusedWaitIsRetriedLikeAReceiveError) {
    Fake.receptions.push_back({ReceiveResult::NothingQueued});
    Queue(1);
    Fake.waitsRefused = 1;
    EXPECT_EQ(ReceiveAll(), Sizes{1});
    EXPECT_EQ(Fake.steps, (Lines{"wait for a datagram", "sleep 10 ms"}));
}

// ---- The batch of UDP 162

class TrapBatches : public Batches {
  protected:
    // Adds a datagram as the receive loop does.
    void Add(size_t count, uint8_t fill, const Ipv4Endpoint& sender = kSender) {
        const std::span<uint8_t> space = batch_->FreeSpace();
        ASSERT_GE(space.size(), TrapBatch::kMaxDatagramSize);
        std::fill_n(space.begin(), count, fill);
        batch_->AddArrival(count, sender);
    }

    std::unique_ptr<TrapBatch> batch_ = std::make_unique<TrapBatch>(nullptr);
};

TEST_F(TrapBatches, StoreEachDatagramWithItsSenderAndTime) {
    Add(3, 7);
    Add(0, 0, {0x7F000001, 162});
    Add(2, 9);
    const std::span<const TrapArrival> arrivals = batch_->arrivals();
    ASSERT_EQ(arrivals.size(), 3U);
    EXPECT_EQ(Octets(arrivals[0].octets, arrivals[0].octets + arrivals[0].count), (Octets{7, 7, 7}));
    EXPECT_EQ(arrivals[1].count, 0U);
    EXPECT_EQ(arrivals[1].sender.address, 0x7F000001U);
    EXPECT_EQ(Octets(arrivals[2].octets, arrivals[2].octets + arrivals[2].count), (Octets{9, 9}));
    Fake.now = {2027, 1, 1, 0, 0, 0, 0};
    batch_->Process();
    EXPECT_TRUE(TrapFile().starts_with(kFrom)) << "the time of arrival";
    EXPECT_TRUE(batch_->arrivals().empty());
}

TEST_F(TrapBatches, AreFullAt256Datagrams) {
    for (int count = 0; count < 256; ++count) {
        EXPECT_FALSE(batch_->FreeSpace().empty()) << count;
        Add(0, 0);
    }
    EXPECT_TRUE(batch_->FreeSpace().empty());
    batch_->Process();
    EXPECT_FALSE(batch_->FreeSpace().empty());
}

TEST_F(TrapBatches, AreFullWhenTheLargestDatagramNoLongerFits) {
    for (int round = 0; round < 2; ++round) {
        Add(TrapBatch::kMaxDatagramSize, 1);
        Add(1, 2);
        EXPECT_TRUE(batch_->FreeSpace().empty());
        EXPECT_EQ(batch_->arrivals().size(), 2U);
        EXPECT_EQ(batch_->arrivals()[0].octets[TrapBatch::kMaxDatagramSize - 1], 1) << "not overwritten";
        batch_->Process();
    }
}

// ---- Recording

class Processing : public Batches {
  protected:
    // Receives the datagrams as one batch and processes it.
    void Process(const std::vector<Octets>& datagrams) {
        for (const Octets& octets : datagrams) {
            Queue(1, octets);
        }
        TrapBatch batch(&socket_);
        ReceiveWhileRunning(socket_, batch);
    }

    static std::vector<Octets> Samples() {
        std::vector<Octets> samples;
        for (const SampleMessage& sample : SampleMessages()) {
            samples.push_back(sample.octets);
        }
        return samples;
    }

    // Traps that differ in their last octet.
    static std::vector<Octets> Numbered(uint8_t count) {
        std::vector<Octets> traps;
        for (uint8_t number = 0; number < count; ++number) {
            traps.push_back(EncodeV2Trap({{"1.3.6.1.4.1.1", EncodeInteger(number)}}));
        }
        return traps;
    }

    static std::string Record(size_t number) {
        return std::string(kFrom) + "---> [1] 1.3.6.1.4.1.1  INTEGER = " + std::to_string(number) +
               "\r\r\n\r\r\n";
    }

    static std::string Records(size_t count) {
        std::string records;
        for (size_t number = 0; number < count; ++number) {
            records += Record(number);
        }
        return records;
    }

    static std::string OnDisk(const SampleMessage& sample) {
        std::string octets;
        for (const wchar_t character : BuildExpectedBody(sample)) {
            octets.append(character == L'\n' ? "\r" : "").push_back(static_cast<char>(character));
        }
        return kFrom + octets;
    }

    static void NoteAppends() {
        Files.onAppend = [](const std::wstring& path, std::string_view) {
            Fake.steps.push_back("append " + std::string(path.begin() + 1, path.end()));
        };
    }
};

TEST_F(Processing, ABatchIsRecordedLikeSingleTraps) {
    std::string expected;
    for (const SampleMessage& sample : SampleMessages()) {
        expected += OnDisk(sample);
    }
    Process(Samples());
    EXPECT_EQ(TrapFile(), expected);
    EXPECT_EQ(LogLines(), Lines(Samples().size(), kReceived));
    Files.Reset();
    for (const Octets& octets : Samples()) {
        Process({octets});
    }
    EXPECT_EQ(TrapFile(), expected);
    EXPECT_EQ(LogLines(), Lines(Samples().size(), kReceived));
}

TEST_F(Processing, ABatchOpensEachFileOnce) {
    NoteAppends();
    Process(Numbered(100));
    EXPECT_EQ(Fake.steps, (Lines{"append SNMP.txt", "append log.txt"}));
}

TEST_F(Processing, EachTrapIsRecordedAndAnnouncedWithItsOwnSender) {
    Fake.receptions.push_back({ReceiveResult::Datagram, {1}, {0x7F000001, 1}});
    Process({{2}});
    EXPECT_LT(TrapFile().find("FROM: 127.0.0.1\r"), TrapFile().find("FROM: 10.1.2.3\r"));
    EXPECT_EQ(LogLines(), (Lines{"Trap received (127.0.0.1).", kReceived}));
}

// A record ends at the euro sign, which the file cannot represent; the next record continues its line.
TEST_F(Processing, ATruncatedRecordDoesNotTruncateOthers) {
    {
        const std::lock_guard lock(MibStoreLock);
        StoreNamedOid(L"na\u20ACme", L"1.3.6.1.4.1.2");
    }
    const Octets truncated = EncodeV2Trap({{"1.3.6.1.4.1.2", EncodeInteger(1)}});
    Process({truncated, Numbered(1)[0], truncated});
    const std::string part = std::string(kFrom) + "---> [1] 1.3.6.1.4.1.2 (na";
    EXPECT_EQ(TrapFile(), part + Record(0) + part);
}

// Longer than any datagram over IPv4.
TEST_F(Processing, ADatagramThatFillsTheBufferIsRecordedToItsLastOctet) {
    constexpr size_t kText = 65'471;
    const Octets full = EncodeV2Trap({{"1.3.6.1.4.1.1", EncodeOctetString(std::string(kText, 'x'))},
                                      {"1.3.6.1.4.1.2", EncodeInteger(4711)}});
    ASSERT_EQ(full.size(), TrapBatch::kMaxDatagramSize);
    Process({full});
    EXPECT_EQ(TrapFile(), std::string(kFrom) + "---> [1] 1.3.6.1.4.1.1  OCTET STRING = \"" +
                              std::string(kText, 'x') +
                              "\"\r\r\n---> [2] 1.3.6.1.4.1.2  INTEGER = 4711\r\r\n\r\r\n");
}

// ---- Forwarding

TEST_F(Processing, ASingleTrapIsRecordedThenAnnouncedThenSent) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    NoteAppends();
    Process(Numbered(1));
    EXPECT_EQ(Fake.steps, (Lines{"append SNMP.txt", "append log.txt", "send"}));
}

TEST_F(Processing, EachTrapOfABatchIsSentInOrderAndUnchanged) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Process(Samples());
    ASSERT_EQ(Fake.attempts.size(), Samples().size());
    for (size_t index = 0; index < Fake.attempts.size(); ++index) {
        EXPECT_EQ(Fake.attempts[index].octets, Samples()[index]) << SampleMessages()[index].name;
        EXPECT_EQ(Fake.attempts[index].target.address, 7U);
        EXPECT_EQ(Fake.attempts[index].target.port, 9162);
    }
}

TEST_F(Processing, AFailureLineFollowsTheLineOfItsTrap) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Fake.sendResults = {SendResult::Sent, SendResult::Failed, SendResult::Sent};
    Process(Numbered(3));
    EXPECT_EQ(LogLines(), (Lines{kReceived, kReceived, kFailed, kReceived}));
}

TEST_F(Processing, EverythingIsWrittenBeforeASendWaits) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Fake.sendResults = {SendResult::Sent, SendResult::Failed, SendResult::BufferFull, SendResult::BufferFull,
                        SendResult::BufferFull};
    size_t waits = 0;
    Fake.onWaitForSendBuffer = [&] {
        ++waits;
        EXPECT_EQ(TrapFile(), Records(3)) << "the third trap waits";
        EXPECT_EQ(LogLines(), (Lines{kReceived, kReceived, kFailed, kReceived}));
        return true;
    };
    Process(Numbered(6));
    EXPECT_EQ(waits, 3U);
    EXPECT_EQ(Fake.attempts.size(), 9U) << "three more for the trap that waited";
    EXPECT_EQ(TrapFile(), Records(6));
    EXPECT_EQ(LogLines(), (Lines{kReceived, kReceived, kFailed, kReceived, kReceived, kReceived, kReceived}));
}

TEST_F(Processing, TheLastTrapIsTheOneBeingProcessed) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Fake.receptions = {{.sender = {0x0A010203, 1}}, {.sender = {0x0A010203, 2}}, {.sender = {0x0A010203, 3}}};
    Fake.sendResults = {SendResult::Sent, SendResult::BufferFull};
    std::wstring whileWaiting;
    Fake.onWaitForSendBuffer = [&] {
        whileWaiting = CopyLastTrapSender();
        return true;
    };
    Process({});
    EXPECT_EQ(whileWaiting, L"10.1.2.3:2");
    EXPECT_EQ(CopyLastTrapSender(), L"10.1.2.3:3");
}

TEST_F(Processing, SettingsChangedWhileASendWaitsApplyToTheNextTrap) {
    for (const bool enabled : {true, false}) {
        ReplaceForwarding(true, L"10.0.0.7", 9162);
        Fake.attempts.clear();
        Fake.sendResults = {SendResult::BufferFull};
        Fake.onWaitForSendBuffer = [enabled] {
            ReplaceForwarding(enabled, L"10.0.0.8", 162);
            return true;
        };
        Process(Numbered(3));
        ASSERT_EQ(Fake.attempts.size(), enabled ? 4U : 2U);
        EXPECT_EQ(Fake.attempts[1].target.address, 7U) << "the send that waited";
        EXPECT_EQ(Fake.attempts.back().target.address, enabled ? 8U : 7U);
    }
    EXPECT_EQ(LogLines(), Lines(6, kReceived));
}

TEST_F(Processing, ASendThatFailsAfterWaitingIsOneFailure) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Fake.sendResults = {SendResult::BufferFull, SendResult::Failed};
    Fake.onWaitForSendBuffer = [] { return true; };
    Process(Numbered(2));
    EXPECT_EQ(LogLines(), (Lines{kReceived, kFailed, kReceived}));
}

// The stop begins while the second trap waits; later waits for the send buffer end at once.
TEST_F(Processing, AfterAStopEachTrapThatCannotBeSentIsLoggedAsFailed) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Fake.sendResults = {SendResult::Failed, SendResult::BufferFull, SendResult::BufferFull,
                        SendResult::BufferFull};
    Fake.onWaitForSendBuffer = [] {
        ServerState.running = false;
        return false;
    };
    NoteAppends();
    Process(Numbered(4));
    EXPECT_EQ(Fake.attempts.size(), 4U) << "one attempt each";
    EXPECT_EQ(std::count(Fake.steps.begin(), Fake.steps.end(), "append log.txt"), 2)
        << "before the wait, and the rest together";
    EXPECT_EQ(LogLines(),
              (Lines{kReceived, kFailed, kReceived, kFailed, kReceived, kFailed, kReceived, kFailed}));
    EXPECT_EQ(TrapFile(), Records(4));
}

TEST_F(Processing, AClosedSocketIsNotAFailure) {
    ReplaceForwarding(true, L"10.0.0.7", 9162);
    Fake.sendResults.assign(2, SendResult::Closed);
    Process(Numbered(2));
    EXPECT_EQ(LogLines(), (Lines{kReceived, kReceived}));
}

TEST_F(Processing, TheThreadProcessesTheTrapsReceivedBeforeTheStop) {
    Queue(20, Numbered(1)[0]);
    StopAfter(5);
    TrapThread(socket_, nullptr);
    EXPECT_EQ(LogLines(), (Lines{"Trap thread started (UDP 162).", kReceived, kReceived, kReceived, kReceived,
                                 kReceived, "Trap thread stopped."}));
}

// ---- Files that are refused

TEST_F(Processing, ARefusedBatchIsWrittenTrapByTrap) {
    for (const std::wstring& refused : {AppPaths.trapFilePath, AppPaths.logFilePath}) {
        Files.Reset();
        Fake.steps.clear();
        NoteAppends();
        // Another program has the file open during the attempts for the batch and for the second trap.
        size_t attempts = 0;
        Files.refusesAppend = [&](const std::wstring& path) {
            attempts += path == refused ? 1 : 0;
            return path == refused && (attempts == 1 || attempts == 3);
        };
        Process(Numbered(4));
        EXPECT_EQ(attempts, 5U);
        if (refused == AppPaths.trapFilePath) {
            EXPECT_EQ(TrapFile(), Record(0) + Record(2) + Record(3));
            EXPECT_EQ(LogLines(), Lines(4, kReceived));
        } else {
            EXPECT_EQ(TrapFile(), Records(4));
            EXPECT_EQ(LogLines(), Lines(3, kReceived));
        }
    }
}

TEST_F(Processing, ARefusedRecordOfASingleTrapIsNotRetried) {
    size_t attempts = 0;
    Files.refusesAppend = [&](const std::wstring& path) {
        attempts += path == AppPaths.trapFilePath ? 1 : 0;
        return path == AppPaths.trapFilePath;
    };
    Process(Numbered(1));
    EXPECT_EQ(attempts, 1U);
    EXPECT_EQ(LogLines(), Lines{kReceived});
}

// ---- UDP 161

class Listening : public Batches {
  protected:
    // Runs the thread until the socket is closed; returns the number of lines in each write.
    std::vector<ptrdiff_t> RunListener() {
        std::vector<ptrdiff_t> writes;
        Files.onAppend = [&](const std::wstring&, std::string_view octets) {
            writes.push_back(std::count(octets.begin(), octets.end(), '\n'));
        };
        ListenerThread(socket_);
        return writes;
    }
};

constexpr ptrdiff_t kStarted = 1;
constexpr ptrdiff_t kStopped = 1;

TEST_F(Listening, EachDatagramIsALineAndAtMost256AreWrittenTogether) {
    Queue(600);
    EXPECT_EQ(RunListener(), (std::vector<ptrdiff_t>{kStarted, 256, 256, 88, kStopped}));
    EXPECT_EQ(LogLines()[1], kOn161);
    EXPECT_EQ(LogLines().size(), 602U);
}

TEST_F(Listening, AnIdlePortWritesNothing) {
    Fake.receptions.assign(3, {ReceiveResult::NothingQueued});
    EXPECT_EQ(RunListener(), (std::vector<ptrdiff_t>{kStarted, kStopped}));
}

TEST_F(Listening, ARefusedBatchOfLinesIsWrittenLineByLine) {
    Queue(3);
    size_t attempts = 0;
    Files.refusesAppend = [&](const std::wstring&) { return ++attempts == 2; };
    RunListener();
    EXPECT_EQ(LogLines(), (Lines{"Listener thread started (UDP 161).", kOn161, kOn161, kOn161,
                                 "Listener thread stopped (UDP 161)."}));
}

}  // namespace
