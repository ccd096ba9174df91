// Loads and batches of traps when memory runs out at any request.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "config/config_file.h"
#include "config/forwarding_settings.h"
#include "core/activity_log.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "mib/mib_parser.h"
#include "mib/name_store.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "tests/support/mib_tables.h"
#include "tests/support/sample_messages.h"
#include "tests/support/scarce_memory.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"
#include "trap/trap_processing.h"

namespace {

// ---- The tables

// The table of names and the pending definitions, as text.
struct MibTables {
    std::map<std::wstring, std::wstring> names;  // by identifier
    std::vector<std::wstring> definitions;

    bool operator==(const MibTables&) const = default;
};

// Fails the test if a row is incomplete. Requires MibStoreLock.
MibTables CopyMibTables() {
    MibTables tables{CopyOidNames(), {}};
    for (const auto& [text, name] : NameOidMap) {
        EXPECT_EQ(name.text, text);
        EXPECT_EQ(name.definition.valid, name.definition.parent != nullptr);
    }
    for (const auto& [oid, name] : tables.names) {
        EXPECT_TRUE(NameOidMap.contains(name)) << ::testing::PrintToString(oid);
    }
    for (const MibName* name : PendingDefinitions) {
        const auto& [parent, subId, valid] = name->definition;
        EXPECT_TRUE(valid);
        tables.definitions.push_back(std::wstring(name->text) + L" " + std::wstring(parent->text) + L" " +
                                     std::to_wstring(subId));
    }
    return tables;
}

// Every kind of value, and enough of them to grow every table several times.
std::wstring MakeModule() {
    std::wstring text;
    for (int number = 0; number < 30; ++number) {
        const std::wstring id = std::to_wstring(number);
        const std::wstring parent = number == 0 ? L"iso" : L"name" + std::to_wstring(number / 2);
        text += L"name" + id + L" OBJECT-TYPE\n::= { " + parent + L" " + id + L" }\n";
        if (number % 10 == 0) {
            text += L"direct" + id + L" OBJECT IDENTIFIER ::= {\n iso org(3) x(" + id + L") -1 }\n";
        }
    }
    return text + L"last OBJECT IDENTIFIER ::= { name5 }\n";
}

void LoadText(std::wstring_view text) {
    ParseMibText(text);
    StoreResolvedDefinitions();
}

TEST(MemoryShortage, ALoadThatRunsOutLeavesUsableTables) {
    const std::lock_guard lock(MibStoreLock);
    const std::wstring text = MakeModule();
    const auto loadAndCopy = [&] {
        LoadText(text);
        return CopyMibTables();
    };
    ClearNameStore();
    const MibTables whole = loadAndCopy();
    EXPECT_GT(whole.names.size(), 30U);
    const auto load = [&] { LoadText(text); };
    const size_t refused =
        RefuseEachRequest(Shortage::OneRequest, ClearNameStore, load, [&](const Attempt& attempt, size_t) {
            EXPECT_EQ(attempt.outcome, Outcome::NoMemory);
            CopyMibTables();
            // The tables can be loaded again and cleared.
            EXPECT_EQ(loadAndCopy(), whole);
            ClearNameStore();
            EXPECT_EQ(loadAndCopy(), whole);
        });
    EXPECT_GT(refused, 100U);
    EXPECT_EQ(CopyMibTables(), whole);
    ClearNameStore();
}

// Octets that a load of the text requests, per character. A load that copied, hashed or formatted the long
// part of these texts for every value would time out.
size_t LoadedOctetsPerCharacter(const std::wstring& text, size_t expectedNames) {
    const std::lock_guard lock(MibStoreLock);
    ClearNameStore();
    const Attempt load = Try([&] { LoadText(text); });
    EXPECT_EQ(load.outcome, Outcome::Returned);
    EXPECT_EQ(OidNameMap.size(), expectedNames);
    ClearNameStore();
    return load.octets / text.size();
}

constexpr size_t kLong = 1'000'000;
constexpr int kMany = 100'000;
constexpr size_t kManyArcs = 100'000;
constexpr int kSome = 20'000;
constexpr size_t kMostOctetsPerCharacter = 100;

std::wstring Repeat(std::wstring_view part, size_t times) {
    std::wstring text;
    for (; times > 0; --times) {
        text += part;
    }
    return text;
}

std::wstring LongIdentifier() {
    return L"big OBJECT IDENTIFIER ::= {" + Repeat(L" 1", kManyArcs) + L" -1 }\n";
}

// Joins row(0) to row(kSome - 1).
template <typename Row>
std::wstring Rows(const Row& row) {
    std::wstring text;
    for (int number = 0; number < kSome; ++number) {
        text += row(number);
    }
    return text;
}

TEST(MemoryShortage, LoadsNeedMemoryInProportionToTheirText) {
    const std::wstring longName(kLong, L'n');
    const auto child = [](int number) {
        const std::wstring text = std::to_wstring(number);
        return L"c" + text + L" OBJECT-TYPE ::= { big " + text + L" }\n";
    };
    const auto link = [](int number) {
        const std::wstring parent = number == 0 ? L"mgmt" : L"c" + std::to_wstring(number - 1);
        return L"c" + std::to_wstring(number) + L" OBJECT IDENTIFIER ::= { " + parent + L" 1 -1 }\n";
    };
    struct Case {
        const char* why;
        std::wstring text;
        size_t names;
    };
    for (const Case& row :
         {Case{"many values of a long name",
               longName + L" OBJECT-TYPE\n" + Repeat(L"::= { mgmt 1 }\n", kMany), 1},
          Case{"many values below a long name",
               longName + L" OBJECT-TYPE ::= { mgmt 1 }\na OBJECT-TYPE ::= { " + longName +
                   L" 1 }\nb OBJECT-TYPE\n" + Repeat(L"::= { a -1 }\n", kMany),
               2},
          Case{"many values of a long identifier", LongIdentifier() + Repeat(L"::= { big -1 }\n", kSome), 1},
          Case{"many children of a long identifier", LongIdentifier() + Rows(child), 1 + kSome},
          Case{"many values, each below the last", Rows(link), kSome}}) {
        EXPECT_LT(LoadedOctetsPerCharacter(row.text, row.names), kMostOctetsPerCharacter) << row.why;
    }
}

// The worst case: each line of seven characters makes `z` 63 arcs longer, because its chain starts at `a` and
// the line assigns the identifier of `z` to `a`.
TEST(MemoryShortage, ValuesThatEachLengthenAChainNeedMemoryForAtMost63ArcsEach) {
    constexpr int kChain = 63;
    std::wstring text = L"c1 OBJECT-TYPE::={a 1}\n";
    for (int place = 2; place < kChain; ++place) {
        text += L"c" + std::to_wstring(place) + L" OBJECT-TYPE::={c" + std::to_wstring(place - 1) + L" 1}\n";
    }
    text += L"z OBJECT-TYPE::={c" + std::to_wstring(kChain - 1) + L" 1}\n";
    text += L"a OBJECT-TYPE::={iso 5}\n" + Repeat(L"::={z}\n", kSome);
    constexpr size_t kMostOctetsOfAnArc = 64;
    EXPECT_LT(LoadedOctetsPerCharacter(text, kChain + kSome), kChain * kMostOctetsOfAnArc / 7);
}

// ---- The folder and the receiver, which write files

class FilesInAShortage : public testing::TestWithParam<Shortage> {
  protected:
    // The file without the stamps of its lines or records; removes it.
    static std::string DrainFile(const std::wstring& path) {
        const std::string octets = ReadOctets(path);
        RemoveFile(path);
        if (octets.empty()) {
            return octets;
        }
        EXPECT_TRUE(IsStamp(std::string_view(octets).substr(0, kStampLength))) << octets;
        return octets.substr(std::min(octets.size(), kStampLength));
    }
    static std::string DrainLog() { return DrainFile(AppPaths.logFilePath); }

    ScratchFolder folder_;
    AppPathsGuard paths_{folder_};
    FreshNameStore store_;
};

// Tried on another thread: a thread must not try a lock that it holds.
bool IsFree(std::mutex& lock) {
    bool free = false;
    std::thread([&] {
        free = lock.try_lock();
        if (free) {
            lock.unlock();
        }
    }).join();
    return free;
}

MibTables CopyTablesLocked() {
    const std::lock_guard lock(MibStoreLock);
    return CopyMibTables();
}

std::string LogLineOfALoad() {
    return "  MIBs loaded. OID mappings: " + std::to_string(CountOidNames()) + "\r\r\n";
}

TEST_P(FilesInAShortage, LoadingTheFolderDoesNotThrowAndLogsItsLine) {
    WriteOctets(AppPaths.mibsDir + L"\\a module with a long name.mib",
                "demo OBJECT IDENTIFIER ::= { enterprises 77 }\nname OBJECT-TYPE\n ::= { demo 1 }\n"
                "zero OBJECT IDENTIFIER ::= { internet }\n");
    WriteOctets(AppPaths.mibsDir + L"\\wide.txt",
                "-- \xC3\xA4\nother OBJECT-TYPE\n ::= { name 2 }\nthird OBJECT-TYPE\n ::= { other 3 }\n");
    const Attempt undisturbed = Try([] { LoadMibFolder(); });
    const MibTables whole = CopyTablesLocked();
    ASSERT_EQ(whole.names.size(), 5U);
    ASSERT_EQ(DrainLog(), LogLineOfALoad());
    // The log is written last, so these are a load's last requests.
    const size_t logRequests =
        Try([] { LogMessage(L"MIBs loaded. OID mappings: " + std::to_wstring(5)); }).requests;
    DrainLog();
    ASSERT_GT(logRequests, 0U);
    ASSERT_GT(undisturbed.requests, logRequests + 10);

    RefuseEachRequest(
        GetParam(), [] {}, [] { LoadMibFolder(); },
        [&](const Attempt& attempt, size_t request) {
            EXPECT_EQ(attempt.outcome, Outcome::Returned);
            EXPECT_TRUE(IsFree(MibStoreLock));
            const bool mustBeLogged =
                GetParam() == Shortage::OneRequest && request < undisturbed.requests - logRequests;
            if (const std::string log = DrainLog(); mustBeLogged || !log.empty()) {
                EXPECT_EQ(log, LogLineOfALoad());
            }
            CopyTablesLocked();
            LoadMibFolder();
            EXPECT_EQ(CopyTablesLocked(), whole);
            EXPECT_EQ(DrainLog(), LogLineOfALoad());
        });
}

TEST_P(FilesInAShortage, SettingsThatWereNotLoadedAreNotLoggedAsLoaded) {
    WriteOctets(AppPaths.configPath,
                "<forwardingIp>an address that is too long to be stored without memory</forwardingIp>"
                "<forwardingPort>9162</forwardingPort>");
    const auto reset = [] {
        ReplaceForwarding(false, L"127.0.0.1", 162);
        RemoveFile(AppPaths.logFilePath);
    };
    const size_t refused = RefuseEachRequest(GetParam(), reset, LoadConfig, [](const Attempt&, size_t) {
        const bool logged = ReadOctets(AppPaths.logFilePath).find("Config loaded.") != std::string::npos;
        EXPECT_TRUE(!logged || CopyForwarding().port == 9162);
    });
    EXPECT_GT(refused, 3U);
    EXPECT_EQ(CopyForwarding().port, 9162);
    reset();
}

constexpr Ipv4Endpoint kSender = {0xFFFEFDFC, 65535};  // its text needs an allocation

std::vector<Octets> TrapsOfEveryKind() {
    const Octets large = EncodeV2Trap(std::vector<Binding>(
        40, {"1.3.6.1.2.1.2.2.1.2.7", EncodeOctetString("an interface with a description that is long")}));
    EXPECT_GT(large.size(), 1500U);
    return {FindSample("v2_eight_bindings").octets, FindSample("v2_every_value_type").octets,
            FindSample("v2_empty_pdu").octets, large};
}

std::vector<TrapArrival> ArriveTogether(const std::vector<Octets>& traps) {
    std::vector<TrapArrival> arrivals;
    for (const Octets& trap : traps) {
        arrivals.push_back({trap.data(), trap.size(), kSender, ReadLocalTime()});
    }
    return arrivals;
}

// The records of the trap file without stamps; removes it.
std::vector<std::string> DrainRecords() {
    constexpr std::string_view end = "\r\r\n\r\r\n";
    std::vector<std::string> records;
    std::string octets = ReadOctets(AppPaths.trapFilePath);
    RemoveFile(AppPaths.trapFilePath);
    for (size_t length = octets.find(end); length != std::string::npos; length = octets.find(end)) {
        EXPECT_TRUE(IsStamp(octets.substr(0, kStampLength))) << octets;
        records.push_back(octets.substr(kStampLength, length - kStampLength));
        octets.erase(0, length + end.size());
    }
    EXPECT_EQ(octets, "") << "half a record";
    return records;
}

constexpr char kReceived[] = "  Trap received (255.254.253.252).";
constexpr char kFailed[] = "  Forwarding failed (sendto error).";

// Counts the traps and the forwarding failures in the log; removes it.
struct LogCounts {
    size_t received = 0;
    size_t failed = 0;
};
LogCounts DrainLogCounts() {
    constexpr std::string_view end = "\r\r\n";
    LogCounts counts;
    bool mayFail = false;
    std::string octets = ReadOctets(AppPaths.logFilePath);
    RemoveFile(AppPaths.logFilePath);
    for (size_t length = octets.find(end); length != std::string::npos; length = octets.find(end)) {
        EXPECT_TRUE(IsStamp(octets.substr(0, kStampLength))) << octets;
        const std::string message = octets.substr(kStampLength, length - kStampLength);
        EXPECT_TRUE(message == kReceived || (message == kFailed && mayFail)) << message;
        mayFail = message == kReceived;
        ++(mayFail ? counts.received : counts.failed);
        octets.erase(0, length + end.size());
    }
    EXPECT_EQ(octets, "") << "half a line";
    return counts;
}

// Whether `some` is `all` without at most `most` of its elements, in the same order.
bool IsAllBut(size_t most, const std::vector<std::string>& some, const std::vector<std::string>& all) {
    auto found = some.begin();
    for (const std::string& record : all) {
        found += found != some.end() && *found == record ? 1 : 0;
    }
    return found == some.end() && some.size() + most >= all.size();
}

TEST_P(FilesInAShortage, EachTrapOfABatchIsRecordedCompletelyOrNotAtAll) {
    {
        const std::lock_guard lock(MibStoreLock);
        StoreNamedOid(L"a name that is too long to be stored without memory", L"1.3.6.1.2.1.2.2.1.2.7");
    }
    std::vector<Octets> traps = TrapsOfEveryKind();
    traps.insert(traps.end(), {traps[0], traps[2]});
    const std::vector<TrapArrival> arrivals = ArriveTogether(traps);
    ASSERT_TRUE(StartSocketLibrary());
    UdpSocketRef forwarder = OpenUdpSocket();
    ReplaceForwarding(true, L"255.255.255.255", 9);  // the system refuses to broadcast
    const auto clear = [&] {
        DrainRecords();
        DrainLogCounts();
    };
    const auto process = [&] { ProcessTraps(arrivals, forwarder.get()); };
    clear();
    process();
    const std::vector<std::string> all = DrainRecords();
    ASSERT_EQ(all.size(), traps.size());
    EXPECT_TRUE(all[0].starts_with("       FROM: 255.254.253.252\r\r\n---> [1] ")) << all[0];
    const auto expectAllLogged = [&] {
        const LogCounts counts = DrainLogCounts();
        EXPECT_EQ(counts.received, traps.size());
        EXPECT_EQ(counts.failed, traps.size());
    };
    expectAllLogged();

    const size_t lost = GetParam() == Shortage::OneRequest ? 1 : traps.size();
    const size_t refused = RefuseEachRequest(GetParam(), clear, process, [&](const Attempt& attempt, size_t) {
        EXPECT_EQ(attempt.outcome, Outcome::Returned);
        const std::vector<std::string> left = DrainRecords();
        EXPECT_TRUE(IsAllBut(lost, left, all)) << left.size() << " of " << all.size();
        const LogCounts counts = DrainLogCounts();
        EXPECT_GE(counts.received + lost, traps.size());
        EXPECT_GE(counts.failed + lost, traps.size());
        process();
        EXPECT_EQ(DrainRecords(), all);
        expectAllLogged();
    });
    EXPECT_GT(refused, 10U);
    ReplaceForwarding(false, L"127.0.0.1", 162);
    CloseUdpSocket(*forwarder);
    StopSocketLibrary();
}

INSTANTIATE_TEST_SUITE_P(Each, FilesInAShortage,
                         ::testing::Values(Shortage::OneRequest, Shortage::ThatAndAllLater),
                         [](const ::testing::TestParamInfo<Shortage>& kind) {
                             return kind.param == Shortage::OneRequest ? "OfOneRequest" : "FromThenOn";
                         });

}  // namespace
