// Where a datagram's time goes, as one line a step: natively and, built for Windows, under Wine, where the
// benchmark library is not to be had. A trap of eight bindings. Works in the data folder: for a scratch one.
// Usage: datagram_steps ROUNDS. Prints "step nanoseconds"; "whole" is RecordTraps, which all but "receive"
// are part of.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/bench_messages.h"
#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/file_text.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/udp_socket.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"
#include "trap/trap_thread.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint16_t kFreePort = 16162;
constexpr uint32_t kLoopback = 0x7F000001;
constexpr long kPortion = 100;  // datagrams that any receive buffer holds
constexpr int kRepetitions = 5;

// The best of some repetitions: what else the machine does only ever adds.
template <typename Step>
void Report(const char* name, long rounds, Step step) {
    double best = 0;
    for (int repetition = 0; repetition < kRepetitions; ++repetition) {
        const Clock::time_point start = Clock::now();
        for (long round = 0; round < rounds; ++round) {
            step();
        }
        const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
        const double each = elapsed.count() / static_cast<double>(rounds);
        best = repetition == 0 ? each : std::min(best, each);
    }
    std::printf("%s %.0f\n", name, best);
    std::fflush(stdout);
}

// From a buffer that is never empty: what waiting costs is not the datagram's.
void ReportReceive(long rounds, const Octets& trap) {
    const UdpSocketRef receiver = OpenUdpSocket();
    const UdpSocketRef sender = OpenUdpSocket();
    if (!BindToAllAddresses(*receiver, kFreePort)) {
        return;
    }
    std::string buffer(65535, '\0');
    double best = 0;
    for (long portion = 0; portion < std::max(rounds / kPortion, 1L); ++portion) {
        for (long place = 0; place < kPortion; ++place) {
            SendDatagram(*sender, {kLoopback, kFreePort}, trap.data(), trap.size());
        }
        const Clock::time_point start = Clock::now();
        for (long place = 0; place < kPortion; ++place) {
            size_t size = 0;
            Ipv4Endpoint from;
            ReceiveDatagram(*receiver, reinterpret_cast<uint8_t*>(buffer.data()), buffer.size(), &size,
                            &from);
        }
        const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
        best = portion == 0 ? elapsed.count() : std::min(best, elapsed.count());
    }
    std::printf("receive %.0f\n", best / kPortion);
}

}  // namespace

int main(int argc, char** argv) {
    const long rounds = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 1000;
    InitAppPaths();
    StartSocketLibrary();
    const Octets trap = MakeTrap(8);
    const LocalTime time = ReadLocalTime();
    TrapWorkspace workspace;
    std::string octets;
    ReportReceive(rounds, trap);
    Report("stamp", rounds, [] { ReadLocalTime(); });
    Report("decode", rounds, [&] { DecodeSnmpMessage(trap.data(), trap.size(), workspace.bindings); });
    Report("compose", rounds,
           [&] { ComposeTrapRecord(time, L"127.0.0.1", workspace.bindings, workspace.record); });
    Report("octets", rounds, [&] {
        octets.clear();
        AppendFileLines(workspace.record, octets);
    });
    Report("append", rounds, [&] { AppendOctets(AppPaths.trapFilePath, octets); });
    Report("log", rounds, [&] { LogMessage(L"Trap received (127.0.0.1)."); });
    Report("whole", rounds, [&] {
        TrapArrival arrival = {trap.data(), trap.size(), {kLoopback, 49152}, ReadLocalTime()};
        RecordTraps(std::span(&arrival, 1), nullptr, workspace);
    });
    StopSocketLibrary();
    return 0;
}
