// Sends numbered traps to this machine and watches the receiver's socket from outside.
//
// trap_sender burst count=N             without a pause
// trap_sender paced count=N rate=N      at so many a second, in portions of a millisecond
// trap_sender keep-busy count=N keep=N  as fast as the receiver takes them: pauses while more than `keep`
//                                       octets wait in its buffer, so that it never runs dry and never
//                                       overflows; the rate is the receiver's own
// trap_sender fill                      until the first one is lost: for a receiver that was stopped
//
// Any of them takes bindings=N (2) of each trap, port=N (162) and first=N (0), the number of the first. All
// but fill wait until the buffer is empty. Prints "sent lost sending whole": datagrams, those that the system
// dropped, the seconds that sending took and those until the buffer was empty. Linux.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>

#include "bench/storm/socket_table.h"
#include "bench/storm/trap_stream.h"

namespace {

using Clock = std::chrono::steady_clock;

// What may be said behind the mode, with what holds when it is not.
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
    constexpr size_t kBetweenLooks = 256;
    const size_t count = Number("count");
    while (stream.sent() < count) {
        stream.Send(std::min(kBetweenLooks, count - stream.sent()));
        WaitWhileMoreWaits(Port(), Number("keep"));
    }
}

void Fill(TrapStream& stream) {
    const uint64_t lostBefore = ReadSocketState(Port()).lost;
    while (ReadSocketState(Port()).lost == lostBefore) {
        stream.Send(1);
    }
}

const std::map<std::string_view, void (*)(TrapStream&)> kModes{
    {"burst", SendBurst}, {"paced", SendPaced}, {"keep-busy", KeepBusy}, {"fill", Fill}};

// False: a word that is no NAME=NUMBER of ours.
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
        std::fputs("usage: trap_sender burst|paced|keep-busy|fill [NAME=NUMBER...]; see the source\n",
                   stderr);
        return 2;
    }
    TrapStream stream(Port(), Number("bindings"), static_cast<uint32_t>(Number("first")));
    const uint64_t lostBefore = ReadSocketState(Port()).lost;
    const Clock::time_point start = Clock::now();
    mode->second(stream);
    const double sending = SecondsSince(start);
    if (mode->first != "fill") {
        WaitWhileMoreWaits(Port(), 0);
    }
    const double whole = SecondsSince(start);
    const auto lost = static_cast<unsigned long long>(ReadSocketState(Port()).lost - lostBefore);
    std::printf("%zu %llu %.6f %.6f\n", stream.sent(), lost, sending, whole);
    return 0;
}
