// The floor for a receiver: the least work that one can do. Runs until it is killed.
// Usage: floor_receiver [FOLDER RECORD_OCTETS LINE_OCTETS]
//
// Receives datagrams from UDP 162 and does not decode them. With arguments it also appends a block of octets
// to each of two files, opening and closing both for each datagram.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/floor_system.h"

namespace {

std::string MakeBlock(const char* size) {
    return std::string(std::strtoul(size, nullptr, 10) - 1, '.') + '\n';
}

template <typename Handler>
[[noreturn]] void ReceiveForever(Handler handle) {
    BindTrapSocket();
    std::vector<char> buffer(65535);
    for (;;) {
        if (ReceiveDatagram(buffer)) {
            handle();
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        ReceiveForever([] {});
    }
    if (argc != 4) {
        std::fputs("usage: floor_receiver [FOLDER RECORD_OCTETS LINE_OCTETS]\n", stderr);
        return 2;
    }
    UseFolder(argv[1]);
    const std::string record = MakeBlock(argv[2]);
    const std::string line = MakeBlock(argv[3]);
    ReceiveForever([&] { AppendBlocks(record, line); });
}
