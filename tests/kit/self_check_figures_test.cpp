// Measurements on this machine: times, a burst, and resources after opening each window fifty times.
#include "tests/kit/self_check.h"

#include <filesystem>
#include <fstream>

// Needs windows.h first.
#include <psapi.h>

#include "tests/kit/data_folder_aside.h"
#include "tests/support/sample_messages.h"

namespace {

std::string MillisecondsSince(ULONGLONG start) {
    return std::to_string(GetTickCount64() - start) + " ms";
}

class Figures : public SelfCheck {};

TEST_F(Figures, FromTheStartToListening) {
    EXPECT_EQ(program_->Close(), 0U);
    ASSERT_TRUE(RemoveFolder(DataFolder()));
    const ULONGLONG start = GetTickCount64();
    StartProgram();
    Fact("from the start of the program to listening: " + MillisecondsSince(start));
}

TEST_F(Figures, ABurstOfFiftyThousandTraps) {
    constexpr size_t kSent = 50'000;
    const Octets& trap = FindSample("v2_link_down").octets;
    const ULONGLONG start = GetTickCount64();
    for (size_t sent = 0; sent < kSent; ++sent) {
        Send(trap);
    }
    const ULONGLONG sentAfter = GetTickCount64() - start;
    ASSERT_TRUE(WaitForTraps(1));
    // Waits until no trap has been recorded for a second. A longer pause only makes the figure smaller.
    size_t recorded = 0;
    ULONGLONG lastGrowth = GetTickCount64();
    while (GetTickCount64() - lastGrowth < 1000) {
        Sleep(50);
        const size_t now = CountLogLines("Trap received");
        if (now > recorded) {
            recorded = now;
            lastGrowth = GetTickCount64();
        }
    }
    Fact("a burst of " + std::to_string(kSent) + " traps, sent in " + std::to_string(sentAfter) + " ms: " +
         std::to_string(recorded) + " recorded within " + std::to_string(lastGrowth - start) + " ms");
    EXPECT_TRUE(
        WaitUntil([] { return CountOf(ReadDataFile(kTraps), "FROM: ") == CountLogLines("Trap received"); }));
}

TEST_F(Figures, OpeningTheMonitorWithTenMegabytes) {
    const std::string record =
        "2026-03-07 09:05:02.047       FROM: 127.0.0.1\r\r\n---> [1] 1.3.6.1.2.1.1.3.0  "
        "TimeTicks = 123456\r\r\n\r\r\n";
    std::ofstream file(std::filesystem::path(DataFile(kTraps)), std::ios::binary | std::ios::app);
    for (size_t written = 0; written < 10'000'000; written += record.size()) {
        file << record;
    }
    file.close();
    const ULONGLONG start = GetTickCount64();
    // It becomes visible once it is filled. Wine needs a second per megabyte, or more on a busy machine.
    const HWND monitor = Open(kMonitorButton, L"SNMP_MON_WND", 5min);
    ASSERT_NE(monitor, nullptr);
    EXPECT_GT(ReadTextLength(FindControl(monitor, L"Edit", 0)), 9'000'000U);
    Fact("opening the monitor with 10 MB: " + MillisecondsSince(start));
}

struct Resources {
    size_t memory = 0;  // private, in KiB
    DWORD handles = 0;
    DWORD gdiObjects = 0;
    DWORD userObjects = 0;
};

Resources ResourcesOf(HANDLE process) {
    Resources resources;
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    memory.cb = sizeof memory;
    GetProcessMemoryInfo(process, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof memory);
    resources.memory = memory.PrivateUsage / 1024;
    GetProcessHandleCount(process, &resources.handles);
    resources.gdiObjects = GetGuiResources(process, GR_GDIOBJECTS);
    resources.userObjects = GetGuiResources(process, GR_USEROBJECTS);
    return resources;
}

std::string Describe(const Resources& resources) {
    return std::to_string(resources.memory) + " KiB of memory, " + std::to_string(resources.handles) +
           " handles, " + std::to_string(resources.gdiObjects) + " GDI and " +
           std::to_string(resources.userObjects) + " USER objects";
}

// The first opening is not measured: it creates objects that windows share.
TEST_F(Figures, FiftyOpeningsOfEachWindow) {
    constexpr DWORD kOpenings = 50;
    const std::pair<int, const wchar_t*> windows[] = {{kForwardingButton, L"SNMP_FWD_WND"},
                                                      {kMonitorButton, L"SNMP_MON_WND"},
                                                      {kLogButton, L"SNMP_LOG_WND"},
                                                      {kStatusButton, L"SNMP_STATUS_WND"}};
    const auto openAndClose = [&] {
        for (const auto& [button, className] : windows) {
            const HWND window = Open(button, className);
            ASSERT_NE(window, nullptr);
            ASSERT_TRUE(CloseWindowAndWait(window));
        }
    };
    openAndClose();
    const Resources before = ResourcesOf(program_->process());
    for (DWORD opening = 0; opening < kOpenings; ++opening) {
        ASSERT_NO_FATAL_FAILURE(openAndClose());
    }
    const Resources after = ResourcesOf(program_->process());
    Fact("before fifty openings of each window: " + Describe(before));
    Fact("after them: " + Describe(after));
    // A leak would add at least one per opening.
    EXPECT_LT(after.handles, before.handles + kOpenings);
    EXPECT_LT(after.gdiObjects, before.gdiObjects + kOpenings);
    EXPECT_LT(after.userObjects, before.userObjects + kOpenings);
}

}  // namespace
