// The most expensive inputs, hostile datagrams and MIB files, at three sizes each to show how the cost grows.
// The number after a name is the size (octets, braces or definitions). "BigO" is the cost of one of them if
// the cost is linear, and "RMS" how far the three sizes deviate from that.
// A small stack is enough: (ulimit -s 128; worst_cases)
#include <benchmark/benchmark.h>

#include <mutex>
#include <string>

#include "bench/bench_messages.h"
#include "bench/mib_samples.h"
#include "mib/mib_parser.h"
#include "mib/name_store.h"
#include "platform/clock.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

namespace {

// Decodes the datagram and composes its record.
template <Octets (*MakeDatagram)(size_t octets)>
void BM_Datagram(benchmark::State& state) {
    const Octets datagram = MakeDatagram(static_cast<size_t>(state.range(0)));
    std::vector<VarbindRecord> bindings;
    for (auto unused : state) {
        DecodeSnmpMessage(datagram.data(), datagram.size(), bindings);
        benchmark::DoNotOptimize(ComposeTrapRecord(ReadLocalTime(), L"127.0.0.1", bindings).data());
    }
    state.SetComplexityN(static_cast<int64_t>(datagram.size()));
}

void SetDatagramSizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(kMaxUdpPayload / 4)->Arg(kMaxUdpPayload / 2)->Arg(kMaxUdpPayload);
    bench->Complexity(benchmark::oN)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(BM_Datagram<MakeTrapOfTinyBindings>)->Apply(SetDatagramSizes);
BENCHMARK(BM_Datagram<MakeTrapOfTinyElements>)->Apply(SetDatagramSizes);
BENCHMARK(BM_Datagram<MakeTrapOfNestedElements>)->Apply(SetDatagramSizes);
BENCHMARK(BM_Datagram<MakeTrapWithGiantIdentifier>)->Apply(SetDatagramSizes);
BENCHMARK(BM_Datagram<MakeTrapWithGiantText>)->Apply(SetDatagramSizes);
BENCHMARK(BM_Datagram<MakeTrapOfTenOctetArcs>)->Apply(SetDatagramSizes);

// Parses the text and resolves its definitions.
template <std::string (*MakeText)(size_t size)>
void BM_MibText(benchmark::State& state) {
    const std::string octets = MakeText(static_cast<size_t>(state.range(0)));
    const std::wstring text(octets.begin(), octets.end());
    for (auto unused : state) {
        const std::lock_guard lock(MibStoreLock);
        ClearNameStore();
        ParseMibText(text);
        StoreResolvedDefinitions();
    }
    EmptyNameStore();
    state.SetComplexityN(state.range(0));
}

std::string RepeatInOneLine(const std::string& unit, size_t octets) {
    std::string text;
    text.reserve(octets + unit.size());
    while (text.size() < octets) {
        text += unit;
    }
    return text;
}

std::string MakeLineOfDefinitions(size_t octets) {
    return RepeatInOneLine("sample OBJECT-TYPE ::= { iso 3 } ", octets);
}

// Two keywords begin with this letter.
std::string MakeLineOfFirstLetters(size_t octets) {
    return RepeatInOneLine("O", octets);
}

std::string MakeUnclosedBraces(size_t braces) {
    std::string text;
    for (size_t brace = 0; brace < braces; ++brace) {
        text += "sample OBJECT-TYPE ::= { iso\n";
    }
    return text;
}

std::string MakeDefinition(size_t number, size_t parent) {
    return "link" + std::to_string(number) + " OBJECT IDENTIFIER ::= { link" + std::to_string(parent) +
           " 1 }\n";
}

// The parent of each definition is the previous one.
std::string MakeChain(size_t definitions) {
    std::string text = "link0 OBJECT IDENTIFIER ::= { enterprises 1 }\n";
    for (size_t number = 1; number < definitions; ++number) {
        text += MakeDefinition(number, number - 1);
    }
    return text;
}

std::string MakeReversedChain(size_t definitions) {
    std::string text;
    for (size_t number = definitions; number-- > 1;) {
        text += MakeDefinition(number, number - 1);
    }
    return text + "link0 OBJECT IDENTIFIER ::= { enterprises 1 }\n";
}

std::string MakeCycle(size_t definitions) {
    return MakeDefinition(0, definitions - 1) + MakeChain(definitions).substr(MakeChain(1).size());
}

// Half of the text is one name.
std::string MakeValuesOfALongName(size_t octets) {
    std::string text(octets / 2, 'n');
    text += " OBJECT-TYPE\n";
    while (text.size() < octets) {
        text += "::= { b 1 }\n";
    }
    return text;
}

std::string MakeLongIdentifier(size_t octets) {
    return "big OBJECT IDENTIFIER ::= {" + RepeatInOneLine(" 1", octets) + " -1 }\n";
}

// Half of the text is one identifier.
std::string MakeValuesOfALongIdentifier(size_t octets) {
    std::string text = MakeLongIdentifier(octets / 2);
    while (text.size() < octets) {
        text += "::= { big -1 }\n";
    }
    return text;
}

std::string MakeChildrenOfALongIdentifier(size_t octets) {
    std::string text = MakeLongIdentifier(octets / 2);
    for (size_t child = 0; text.size() < octets; ++child) {
        const std::string number = std::to_string(child);
        text += "c" + number + " OBJECT-TYPE ::= { big " + number + " }\n";
    }
    return text;
}

void SetLineSizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(12500000)->Arg(25000000)->Arg(50000000);
    bench->Complexity(benchmark::oN)->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_MibText<MakeLineOfDefinitions>)->Apply(SetLineSizes);
BENCHMARK(BM_MibText<MakeLineOfFirstLetters>)->Apply(SetLineSizes);

void SetLongSizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(2500000)->Arg(5000000)->Arg(10000000);
    bench->Complexity(benchmark::oN)->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_MibText<MakeValuesOfALongName>)->Apply(SetLongSizes);
BENCHMARK(BM_MibText<MakeValuesOfALongIdentifier>)->Apply(SetLongSizes);
BENCHMARK(BM_MibText<MakeChildrenOfALongIdentifier>)->Apply(SetLongSizes);

void SetBraceCounts(benchmark::internal::Benchmark* bench) {
    bench->Arg(250000)->Arg(500000)->Arg(1000000);
    bench->Complexity(benchmark::oN)->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_MibText<MakeUnclosedBraces>)->Apply(SetBraceCounts);

void SetDefinitionCounts(benchmark::internal::Benchmark* bench) {
    bench->Arg(25000)->Arg(50000)->Arg(100000);
    bench->Complexity(benchmark::oN)->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_MibText<MakeChain>)->Apply(SetDefinitionCounts);
BENCHMARK(BM_MibText<MakeReversedChain>)->Apply(SetDefinitionCounts);
BENCHMARK(BM_MibText<MakeCycle>)->Apply(SetDefinitionCounts);

}  // namespace

BENCHMARK_MAIN();
