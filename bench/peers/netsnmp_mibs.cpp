// The peer's side of the MIB folder comparison: net-snmp's library reads every file of a folder.
// Usage: netsnmp_mibs FOLDER. Prints "seconds before peak after", resident memory in KiB. Its complaints
// about files go to standard error.
// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
// clang-format on

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "bench/process_memory.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: netsnmp_mibs FOLDER\n", stderr);
        return 2;
    }
    setenv("MIBS", "", 1);
    setenv("MIBDIRS", argv[1], 1);
    netsnmp_init_mib();
    const size_t before = ReadMemory("VmRSS:");
    const std::clock_t start = std::clock();
    add_mibdir(argv[1]);
    read_all_mibs();
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    std::printf("%.4f %zu %zu %zu\n", seconds, before, ReadMemory("VmHWM:"), ReadMemory("VmRSS:"));
    return 0;
}
