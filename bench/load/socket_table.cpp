#include "bench/load/socket_table.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

// A line is "sl local remote state tx:rx ..." in hexadecimal, with the datagrams lost as its last number.
SocketState ReadSocketState(uint16_t port) {
    std::ifstream table("/proc/net/udp");
    std::string line;
    while (std::getline(table, line)) {
        unsigned listed = 0;
        unsigned long queued = 0;
        if (std::sscanf(line.c_str(), " %*u: %*8x:%4x %*8x:%*4x %*x %*x:%lx", &listed, &queued) == 2 &&
            listed == port) {
            line.erase(line.find_last_not_of(' ') + 1);
            return {queued, std::strtoull(line.c_str() + line.rfind(' '), nullptr, 10)};
        }
    }
    std::fprintf(stderr, "No program listens on UDP %u.\n", port);
    std::exit(1);
}

void WaitUntilDrained(uint16_t port, uint64_t octets) {
    while (ReadSocketState(port).queued > octets) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}
