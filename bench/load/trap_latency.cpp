// Measures the time from sending a trap to an idle receiver until its record is on disk: sends a trap, polls
// the file's size until it grows, and pauses. Nothing else may write to the file. Linux.
// Usage: trap_latency FILE COUNT. Prints the 10th percentile and the median in microseconds.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "bench/load/trap_stream.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kBindings = 5;
constexpr auto kPause = std::chrono::milliseconds(5);
constexpr auto kDeadline = std::chrono::seconds(60);

// 0 if there is no such file yet.
off_t FileSize(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 ? status.st_size : 0;
}

double MeasureTrap(TrapStream& stream, const char* path) {
    const off_t before = FileSize(path);
    const Clock::time_point start = Clock::now();
    stream.Send(1);
    while (FileSize(path) == before) {
        if (Clock::now() - start > kDeadline) {
            std::fputs("A trap was not recorded.\n", stderr);
            std::exit(1);
        }
    }
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
    const long count = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 0;
    if (count < 1) {
        std::fputs("usage: trap_latency FILE COUNT\n", stderr);
        return 2;
    }
    TrapStream stream(kTrapPort, kBindings, 0);
    std::vector<double> taken;
    for (long trap = 0; trap < count; ++trap) {
        taken.push_back(MeasureTrap(stream, argv[1]));
        std::this_thread::sleep_for(kPause);
    }
    std::sort(taken.begin(), taken.end());
    std::printf("%.1f %.1f\n", taken[taken.size() / 10], taken[taken.size() / 2]);
    return 0;
}
