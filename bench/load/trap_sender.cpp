// Sends numbered traps to this machine and watches the receiver's socket. Linux.
//
// trap_sender burst count=N             without a pause
// trap_sender paced count=N rate=N      at `rate` traps a second
// trap_sender keep-busy count=N keep=N  as fast as the receiver reads them: pauses while more than `keep`
//                                       octets are queued, so that its buffer is never empty and never full
//
// All modes accept bindings=N (2), port=N (162) and first=N (0), the number of the first trap. Waits until
// the buffer is empty and prints "sent lost sending whole": datagrams sent, datagrams that the system
// dropped, seconds until all were sent, seconds until the buffer was empty.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>

#include "bench/load/socket_table.h"
#include "bench/load/trap_stream.h"

namespace {

using Clock = std::chrono::steady_clock;

// The options after the mode, with their defaults.
std::map<std::string, size_t, std::less<>> numbers{
    {"count", 1000}, {"rate", 1000}, {"keep", 0}, {"bindings", 2}, {"port", kTrapPort}, {"first", 0},
};

size_t Number(std::string_view name) {
    return numbers.find(name)->second;
}

uint16_t Port() {
    return static_cast<uint16_t>(Number("port"));
}

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void SendBurst(TrapStream& stream) {
    stream.Send(Number("count"));
}

void SendPaced(TrapStream& stream) {
    const size_t count = Number("count");
    const Clock::time_point start = Clock::now();
    while (stream.sent() < count) {
        const double due = SecondsSince(start) * static_cast<double>(Number("rate")) + 1;
        stream.Send(std::min(count, static_cast<size_t>(due)) - stream.sent());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void KeepBusy(TrapStream& stream) {
    constexpr size_t kBetweenChecks = 256;
    const size_t count = Number("count");
    while (stream.sent() < count) {
        stream.Send(std::min(kBetweenChecks, count - stream.sent()));
        WaitUntilDrained(Port(), Number("keep"));
    }
}

const std::map<std::string_view, void (*)(TrapStream&)> kModes{
    {"burst", SendBurst}, {"paced", SendPaced}, {"keep-busy", KeepBusy}};

// Returns false if a word is not NAME=NUMBER with a known name.
bool ReadNumbers(int count, char** words) {
    for (int index = 2; index < count; ++index) {
        const std::string_view word = words[index];
        const size_t equals = word.find('=');
        const auto found = numbers.find(word.substr(0, equals));
        if (equals == std::string_view::npos || found == numbers.end()) {
            return false;
        }
        found->second = std::strtoull(words[index] + equals + 1, nullptr, 10);
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const auto mode = kModes.find(argc > 1 ? argv[1] : "");
    if (mode == kModes.end() || !ReadNumbers(argc, argv)) {
        std::fputs("usage: trap_sender burst|paced|keep-busy [NAME=NUMBER...]; see the source\n", stderr);
        return 2;
    }
    TrapStream stream(Port(), Number("bindings"), static_cast<uint32_t>(Number("first")));
    const uint64_t lostBefore = ReadSocketState(Port()).lost;
    const Clock::time_point start = Clock::now();
    mode->second(stream);
    const double sending = SecondsSince(start);
    WaitUntilDrained(Port());
    const double whole = SecondsSince(start);
    const auto lost = static_cast<unsigned long long>(ReadSocketState(Port()).lost - lostBefore);
    std::printf("%zu %llu %.6f %.6f\n", stream.sent(), lost, sending, whole);
    return 0;
}
