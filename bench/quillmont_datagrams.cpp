// Our side of the decoding comparison: the same datagrams as peers/netsnmp_datagrams.cpp, decoded and
// composed into the text of a record, with no MIB file loaded. Usage: quillmont_datagrams BINDINGS ROUNDS.
// Prints nanoseconds of processor time per datagram.
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "bench/bench_messages.h"
#include "platform/clock.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: quillmont_datagrams BINDINGS ROUNDS\n", stderr);
        return 2;
    }
    const Octets datagram = MakeTrap(std::strtoul(argv[1], nullptr, 10));
    const long rounds = std::strtol(argv[2], nullptr, 10);
    const LocalTime time = ReadLocalTime();
    VarbindList bindings;
    std::wstring record;
    size_t composed = 0;
    const std::clock_t start = std::clock();
    for (long round = 0; round < rounds; ++round) {
        DecodeSnmpMessage(datagram.data(), datagram.size(), bindings);
        ComposeTrapRecord(time, L"127.0.0.1", bindings, record);
        composed += record.size();
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    if (composed == 0) {
        return 1;
    }
    std::printf("%.1f\n", seconds * 1e9 / static_cast<double>(rounds));
    return 0;
}
