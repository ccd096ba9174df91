// The two views. Their text control is part of Windows.
#include "tests/kit/self_check.h"

#include <filesystem>
#include <fstream>

namespace {

class Views : public SelfCheck {
  protected:
    HWND OpenMonitor(std::chrono::milliseconds limit = 20s) {
        const HWND monitor = Open(kMonitorButton, L"SNMP_MON_WND", limit);
        EXPECT_NE(monitor, nullptr) << "no monitor";
        return FindControl(monitor, L"Edit", 0);
    }

    static bool WaitForEnd(HWND view, const std::wstring& end) {
        return WaitUntil([&] { return ReadText(view).ends_with(end); });
    }

    static std::string NumberedRecords(size_t count) {
        std::string records;
        for (size_t number = 0; number < count; ++number) {
            records +=
                "2026-03-07 09:05:02.047       FROM: 10.0.0.1\r\r\n---> [1] 1.3.6.1.2.1.1.3.0  TimeTicks = " +
                std::to_string(number) + "\r\r\n\r\r\n";
        }
        return records;
    }
};

TEST_F(Views, OpenAtTheTopAndShowAllTextBeyondTheControlsOwnLimit) {
    const std::string records = NumberedRecords(1000);
    WriteOctets(DataFile(kTraps), records);
    const HWND view = OpenMonitor();
    EXPECT_EQ(::Send(view, EM_GETFIRSTVISIBLELINE), 0);
    EXPECT_EQ(::Send(view, EM_GETSEL), 0) << "the selection is empty and at the start";
    EXPECT_GT(ReadTextLength(view), 90'000U);
    // With its default limit of 32,767 characters the control would refuse the new text.
    for (int number = 0; number < 3; ++number) {
        Send(NamedTrap());
        ASSERT_TRUE(WaitForTraps(static_cast<size_t>(number) + 1));
    }
    EXPECT_TRUE(WaitUntil([&] {
        const std::wstring text = ReadText(view);
        return text.find(L"TimeTicks = 999") != std::wstring::npos &&
               text.find(L"FROM: 127.0.0.1") != std::wstring::npos;
    }));
    const LRESULT lines = ::Send(view, EM_GETLINECOUNT);
    const LRESULT first = ::Send(view, EM_GETFIRSTVISIBLELINE);
    Fact("the first visible line of a view that follows is " + std::to_string(first) + " of " +
         std::to_string(lines));
    EXPECT_GT(first, 0) << "the view did not follow";
}

// On opening, each octet is shown as the character with that code; text added later is read as UTF-8. Octets
// 0 are shown as blanks.
TEST_F(Views, ShowOctetsAbove7FAndTheTextAfterAnOctetZero) {
    std::string octets = "start ";
    std::wstring shown = L"start ";
    for (int octet = 0x80; octet <= 0xFF; ++octet) {
        octets.push_back(static_cast<char>(octet));
        shown.push_back(static_cast<wchar_t>(octet));
    }
    WriteOctets(DataFile(kTraps), octets + std::string(3, '\0') + "end");
    const HWND view = OpenMonitor();
    EXPECT_EQ(ReadText(view), shown + L"   end");
    std::ofstream(std::filesystem::path(DataFile(kTraps)), std::ios::binary | std::ios::app)
        << "\xC3\xBC\xE2\x82\xAC" << std::string(2, '\0') << ".";
    EXPECT_TRUE(WaitForEnd(view, L"end\u00FC\u20AC  .")) << testing::PrintToString(ReadText(view));
}

TEST_F(Views, AreEmptiedWhenTheFileIsDeletedAndFollowTheNextOne) {
    WriteOctets(DataFile(kTraps), "old");
    const HWND view = OpenMonitor();
    EXPECT_EQ(ReadText(view), L"old");
    EXPECT_TRUE(DeleteFileW(DataFile(kTraps).c_str())) << GetLastError();
    EXPECT_TRUE(WaitUntil([&] { return ReadText(view).empty(); }));
    Send(NamedTrap());
    EXPECT_TRUE(WaitForEnd(view, L"INTEGER = 42\r\r\n\r\r\n")) << testing::PrintToString(ReadText(view));
}

// One datagram can produce a line of 260,000 characters.
TEST_F(Views, ShowOneLongLineOfDigits) {
    constexpr size_t kArcs = 65'000;
    std::string value = "1.3";
    for (size_t arc = 0; arc < kArcs; ++arc) {
        value += ".127";
    }
    const HWND view = OpenMonitor();
    auto start = std::chrono::steady_clock::now();
    const auto elapsed = [&start] {
        const auto passed = std::chrono::steady_clock::now() - start;
        return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(passed).count()) + " ms";
    };
    Send(EncodeV2Trap({{"1.3.6.1.4.1.99999", EncodeOid(value)}}));
    EXPECT_TRUE(WaitUntil([&] { return ReadTextLength(view) > 4 * kArcs; }, 5min));
    Fact("showing one line of 260,000 digits and dots as it arrives: " + elapsed());
    ASSERT_TRUE(CloseWindowAndWait(GetParent(view)));
    start = std::chrono::steady_clock::now();
    EXPECT_GT(ReadTextLength(OpenMonitor(5min)), 4 * kArcs);
    Fact("opening the monitor with that line: " + elapsed());
}

}  // namespace
