// Each step of a datagram: decode, name lookup, compose, text to octets, append, log line. worst_cases.cpp
// measures hostile datagrams, compare.sh whole traps from the socket to the files.
//
// The datagram is a linkDown of eight bindings unless the name says otherwise. "items" are datagrams.
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
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

namespace {

constexpr size_t kUsualBindings = 8;

std::wstring ComposeUsualRecord() {
    const Octets trap = MakeTrap(kUsualBindings);
    std::vector<VarbindRecord> bindings;
    DecodeSnmpMessage(trap.data(), trap.size(), bindings);
    return ComposeTrapRecord(ReadLocalTime(), L"127.0.0.1", bindings);
}

void CountDatagrams(benchmark::State& state, size_t octets) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(octets));
}

void BM_Decode(benchmark::State& state) {
    const Octets trap = MakeTrap(static_cast<size_t>(state.range(0)));
    std::vector<VarbindRecord> bindings;
    for (auto unused : state) {
        DecodeSnmpMessage(trap.data(), trap.size(), bindings);
        benchmark::DoNotOptimize(bindings.size());
    }
    CountDatagrams(state, trap.size());
}
BENCHMARK(BM_Decode)->Arg(2)->Arg(8)->Arg(50)->Arg(4000);

// Half of the lookups find a name. The large step defeats the processor's caches.
void BM_NameLookup(benchmark::State& state) {
    const auto names = static_cast<size_t>(state.range(0));
    FillNameStore(names);
    std::wstring name;
    size_t index = 0;
    for (auto unused : state) {
        index = (index + 7919) % (2 * names);
        LookupOidName(SampleOid(index), name);
        benchmark::DoNotOptimize(name.size());
    }
    EmptyNameStore();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NameLookup)->Arg(10000)->Arg(200000)->Arg(500000);

void BM_Compose(benchmark::State& state) {
    const Octets trap = MakeTrap(kUsualBindings);
    std::vector<VarbindRecord> bindings;
    DecodeSnmpMessage(trap.data(), trap.size(), bindings);
    const LocalTime time = ReadLocalTime();
    for (auto unused : state) {
        benchmark::DoNotOptimize(ComposeTrapRecord(time, L"127.0.0.1", bindings).data());
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

}  // namespace

BENCHMARK_MAIN();
