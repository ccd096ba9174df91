// The windows under load, inside one process so that a message's work can be timed: the monitor takes in
// 1,000 more traps at 1, 10 and 100 MB already shown, and the status window refreshes with 10, 1,000 and
// 5,000 MIB files in the folder. Works in the data folder of whoever runs it: for a Wine prefix of its own.
// Timed by hand: the benchmark library is there for the native compiler only.
// Usage: window_bench.exe [LARGEST_MEGABYTES]. Opening 100 MB takes Wine minutes.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/app_paths.h"
#include "core/data_files.h"
#include "platform/files.h"
#include "platform/windows/windows_headers.h"
#include "ui/main_window.h"
#include "ui/status_window.h"
#include "ui/ui_resources.h"
#include "ui/viewer_window.h"

namespace {

constexpr WPARAM kMonitorTimer = 1001;
constexpr int kRounds = 5;

constexpr std::string_view kRecord =
    "2026-03-07 09:05:02.047       FROM: 10.1.2.3\r\r\n"
    "---> [1] 1.3.6.1.2.1.1.3.0  TimeTicks = 123456\r\r\n"
    "---> [2] 1.3.6.1.6.3.1.1.4.1.0  OID = 1.3.6.1.6.3.1.1.5.3\r\r\n"
    "\r\r\n";

std::string RepeatRecord(size_t octets) {
    std::string text;
    text.reserve(octets + kRecord.size());
    while (text.size() < octets) {
        text += kRecord;
    }
    return text;
}

template <typename Action>
double MeasureMilliseconds(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count();
}

template <typename Prepare, typename Action>
void Report(const char* what, size_t size, Prepare prepare, Action action) {
    double best = 0;
    for (int round = 0; round < kRounds; ++round) {
        prepare();
        const double milliseconds = MeasureMilliseconds(action);
        best = round == 0 || milliseconds < best ? milliseconds : best;
    }
    std::printf("%s %zu %.2f\n", what, size, best);
    std::fflush(stdout);
}

void MeasureViewer(size_t megabytes) {
    ReplaceOctets(AppPaths.trapFilePath, RepeatRecord(megabytes * 1000000));
    std::printf("viewer_open_ms %zu %.2f\n", megabytes, MeasureMilliseconds(OpenMonitorWindow));
    std::fflush(stdout);
    const HWND monitor = FindWindowW(L"SNMP_MON_WND", nullptr);
    const std::string thousandTraps = RepeatRecord(1000 * kRecord.size());
    Report(
        "viewer_append_1000_traps_ms", megabytes, [&] { AppendOctets(AppPaths.trapFilePath, thousandTraps); },
        [&] { SendMessageW(monitor, WM_TIMER, kMonitorTimer, 0); });
    DestroyWindow(monitor);
    ClearFile(AppPaths.trapFilePath);
}

std::wstring MakeMibPath(size_t number) {
    return AppPaths.mibsDir + L"\\SAMPLE-" + std::to_wstring(number) + L"-MIB.mib";
}

void MeasureStatus(size_t files) {
    for (size_t number = 0; number < files; ++number) {
        ReplaceOctets(MakeMibPath(number), "x");
    }
    OpenStatusWindow();
    Report(
        "status_refresh_ms", files, [] {}, RefreshStatus);
    DestroyWindow(StatusWindowHandle);
}

}  // namespace

int main(int argc, char** argv) {
    const size_t largest = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10;
    CreateBackgroundBrush();
    CreateUiFont();
    InitAppPaths();
    for (const size_t files : {10U, 1000U, 5000U}) {
        MeasureStatus(files);
    }
    for (size_t megabytes = 1; megabytes <= largest; megabytes *= 10) {
        MeasureViewer(megabytes);
    }
    return 0;
}
