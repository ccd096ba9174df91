// MIB files: parsing one text, loading a folder, and resolving pending definitions. "bytes" are those of the
// MIB text, "items" are definitions. If the environment has QUILLMONT_MIB_FOLDER, that folder is loaded too.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

#include "bench/mib_samples.h"
#include "bench/scratch_data.h"
#include "mib/mib_folder.h"
#include "mib/mib_parser.h"
#include "mib/name_store.h"

namespace {

constexpr size_t kDefinitionsPerFile = 100;

void BM_ParseMibText(benchmark::State& state) {
    const std::string octets = MakeMibText(1, 20 * kDefinitionsPerFile);
    const std::wstring text(octets.begin(), octets.end());
    for (auto unused : state) {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        ParseMibText(text);
    }
    EmptyNameStore();
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseMibText)->Unit(benchmark::kMicrosecond);

void BM_LoadMibFolder(benchmark::State& state) {
    const ScratchData data;
    size_t octets = 0;
    for (size_t number = 0; number < static_cast<size_t>(state.range(0)); ++number) {
        const std::string text = MakeMibText(number, kDefinitionsPerFile);
        std::ofstream(data.mibsFolder() + "/sample" + std::to_string(number) + ".mib") << text;
        octets += text.size();
    }
    for (auto unused : state) {
        LoadMibFolder();
    }
    EmptyNameStore();
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(octets));
}
BENCHMARK(BM_LoadMibFolder)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_LoadOwnFolder(benchmark::State& state, const char* folder) {
    const ScratchData data;
    std::filesystem::remove(data.mibsFolder());
    std::filesystem::create_directory_symlink(std::filesystem::absolute(folder), data.mibsFolder());
    for (auto unused : state) {
        LoadMibFolder();
    }
    EmptyNameStore();
}

// A tree with twenty definitions below each parent, each stored before its parent is known.
void StorePendingDefinitions(size_t count) {
    constexpr size_t kChildren = 20;
    for (size_t index = count; index-- > 0;) {
        const std::wstring parent = index == 0 ? std::wstring(L"enterprises")
                                               : L"sampleObject" + std::to_wstring((index - 1) / kChildren);
        StoreDefinition(StoreName(L"sampleObject" + std::to_wstring(index)), StoreName(parent),
                        static_cast<int32_t>(index % kChildren));
    }
}

void BM_ResolveNames(benchmark::State& state) {
    const auto count = static_cast<size_t>(state.range(0));
    for (auto unused : state) {
        state.PauseTiming();
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        StorePendingDefinitions(count);
        state.ResumeTiming();
        StoreResolvedDefinitions();
    }
    EmptyNameStore();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ResolveNames)->Arg(10000)->Arg(100000)->Arg(500000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (const char* folder = std::getenv("QUILLMONT_MIB_FOLDER")) {
        benchmark::RegisterBenchmark("BM_LoadOwnFolder", BM_LoadOwnFolder, folder)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
