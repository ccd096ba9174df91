// A datagram's way, step by step and as a whole: header walk, decode, rendering by type, name
// lookup, compose, text to octets, append, log line; decode by number of bindings. Hostile datagrams
// are in worst_cases.cpp.
//
// The datagram is a linkDown of eight bindings unless the name says otherwise. "items" are datagrams, or
// bindings where the argument counts them. BM_RecordTraps is the whole way but the receive call.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/bench_messages.h"
#include "bench/mib_samples.h"
#include "bench/scratch_data.h"
#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/file_text.h"
#include "mib/name_store.h"
#include "platform/clock.h"
#include "trap/ber_reader.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"
#include "trap/trap_thread.h"

namespace {

constexpr size_t kUsualBindings = 8;
constexpr Ipv4Endpoint kSender = {0x7F000001, 49152};

std::wstring ComposeUsualRecord() {
    const Octets trap = MakeTrap(kUsualBindings);
    VarbindList bindings;
    DecodeSnmpMessage(trap.data(), trap.size(), bindings);
    std::wstring record;
    ComposeTrapRecord(ReadLocalTime(), L"127.0.0.1", bindings, record);
    return record;
}

void CountDatagrams(benchmark::State& state, size_t octets) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(octets));
}

void DecodeOverAndOver(benchmark::State& state, const Octets& datagram) {
    VarbindList bindings;
    for (auto unused : state) {
        DecodeSnmpMessage(datagram.data(), datagram.size(), bindings);
        benchmark::DoNotOptimize(bindings.size());
    }
    CountDatagrams(state, datagram.size());
}

// Every header of the message and of its bindings, nothing rendered.
size_t WalkHeaders(const uint8_t* position, const uint8_t* end) {
    constexpr uint8_t kConstructed = 0x20;
    size_t headers = 0;
    TlvHeader header;
    for (; ReadTlvHeader(position, end, &header); position = header.contentEnd) {
        headers +=
            1 + ((header.tag & kConstructed) != 0 ? WalkHeaders(header.content, header.contentEnd) : 0);
    }
    return headers;
}

void BM_HeaderWalk(benchmark::State& state) {
    const Octets trap = MakeTrap(kUsualBindings);
    for (auto unused : state) {
        benchmark::DoNotOptimize(WalkHeaders(trap.data(), trap.data() + trap.size()));
    }
    CountDatagrams(state, trap.size());
}
BENCHMARK(BM_HeaderWalk);

void BM_Decode(benchmark::State& state) {
    DecodeOverAndOver(state, MakeTrap(static_cast<size_t>(state.range(0))));
}
BENCHMARK(BM_Decode)->Arg(2)->Arg(8)->Arg(50)->Arg(4000);

// One binding of the type, the message around it included.
void RenderOverAndOver(benchmark::State& state, const Octets& value) {
    DecodeOverAndOver(state, EncodeV2Trap({{"1.3.6.1.2.1.2.2.1.1.1001", value}}));
}

void BM_RenderInteger(benchmark::State& state) {
    RenderOverAndOver(state, EncodeInteger(-123456789));
}
BENCHMARK(BM_RenderInteger);

void BM_RenderCounter64(benchmark::State& state) {
    RenderOverAndOver(state, EncodeUnsigned(ber::kCounter64, 1234567890123456U));
}
BENCHMARK(BM_RenderCounter64);

void BM_RenderPrintableText(benchmark::State& state) {
    RenderOverAndOver(state, EncodeOctetString("GigabitEthernet1/0/24"));
}
BENCHMARK(BM_RenderPrintableText);

void BM_RenderHexadecimal(benchmark::State& state) {
    RenderOverAndOver(state, EncodeOctetString(std::string(40, '\x80')));
}
BENCHMARK(BM_RenderHexadecimal);

void BM_RenderIdentifier(benchmark::State& state) {
    RenderOverAndOver(state, EncodeOid("1.3.6.1.6.3.1.1.5.3"));
}
BENCHMARK(BM_RenderIdentifier);

void BM_RenderIpAddress(benchmark::State& state) {
    RenderOverAndOver(state, EncodeIpAddress(10, 20, 30, 40));
}
BENCHMARK(BM_RenderIpAddress);

void BM_RenderNull(benchmark::State& state) {
    RenderOverAndOver(state, EncodeNull());
}
BENCHMARK(BM_RenderNull);

// Half of the lookups find a name; the identifiers are taken in an order that no cache can guess.
void BM_NameLookup(benchmark::State& state) {
    const auto names = static_cast<size_t>(state.range(0));
    FillNameStore(names);
    std::wstring name;
    size_t place = 0;
    for (auto unused : state) {
        place = (place + 7919) % (2 * names);
        LookupOidName(SampleOid(place), name);
        benchmark::DoNotOptimize(name.size());
    }
    EmptyNameStore();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NameLookup)->Arg(10000)->Arg(200000)->Arg(500000);

// What BM_NameLookup spends on making the identifier it asks for.
void BM_NameLookupWithoutLookup(benchmark::State& state) {
    size_t place = 0;
    for (auto unused : state) {
        place = (place + 7919) % 400000;
        benchmark::DoNotOptimize(SampleOid(place));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NameLookupWithoutLookup);

void BM_Compose(benchmark::State& state) {
    const Octets trap = MakeTrap(kUsualBindings);
    VarbindList bindings;
    DecodeSnmpMessage(trap.data(), trap.size(), bindings);
    const LocalTime time = ReadLocalTime();
    std::wstring record;
    for (auto unused : state) {
        ComposeTrapRecord(time, L"127.0.0.1", bindings, record);
        benchmark::DoNotOptimize(record.data());
    }
    CountDatagrams(state, trap.size());
}
BENCHMARK(BM_Compose);

void BM_TextToOctets(benchmark::State& state) {
    const std::wstring record = ComposeUsualRecord();
    std::string octets;
    for (auto unused : state) {
        octets.clear();
        AppendFileLines(record, octets);
        benchmark::DoNotOptimize(octets.data());
    }
    CountDatagrams(state, octets.size());
}
BENCHMARK(BM_TextToOctets);

// Text to octets, then open, write, close.
void BM_Append(benchmark::State& state) {
    const ScratchData data;
    const std::wstring record = ComposeUsualRecord();
    for (auto unused : state) {
        AppendToFile(AppPaths.trapFilePath, record);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Append);

// Stamp, text to octets, open, write, close.
void BM_LogLine(benchmark::State& state) {
    const ScratchData data;
    for (auto unused : state) {
        LogMessage(L"Trap received (127.0.0.1).");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogLine);

// One trap in its turn, and the most that a turn takes.
void BM_RecordTraps(benchmark::State& state) {
    const ScratchData data;
    const Octets trap = MakeTrap(static_cast<size_t>(state.range(0)));
    std::vector<TrapArrival> arrivals(static_cast<size_t>(state.range(1)));
    for (TrapArrival& arrival : arrivals) {
        arrival = {trap.data(), trap.size(), kSender, ReadLocalTime()};
    }
    TrapWorkspace workspace;
    for (auto unused : state) {
        RecordTraps(arrivals, nullptr, workspace);
    }
    CountDatagrams(state, trap.size() * arrivals.size());
    state.SetItemsProcessed(state.iterations() * state.range(1));
}
BENCHMARK(BM_RecordTraps)->ArgsProduct({{2, 8, 50}, {1, TrapTurn::kMostArrivals}});

}  // namespace

BENCHMARK_MAIN();
