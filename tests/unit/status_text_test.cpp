#include "ui/status_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

std::wstring Blanks(size_t count) {
    return std::wstring(count, L' ');
}

TEST(ServerText, ShowsRunningOrStoppedAfterEighteenBlanks) {
    EXPECT_EQ(BuildServerText(true), L"Server:" + Blanks(18) + L"RUNNING");
    EXPECT_EQ(BuildServerText(false), L"Server:" + Blanks(18) + L"STOPPED");
}

TEST(ListenText, ShowsPort161IfRunningOrItsSocketIsOpen) {
    const std::wstring both = L"Listening:" + Blanks(14) + L"UDP 162 (traps)  |  UDP 161 (snmp)";
    EXPECT_EQ(BuildListenText(true, true), both);
    EXPECT_EQ(BuildListenText(true, false), both) << "even when the bind of 161 failed";
    EXPECT_EQ(BuildListenText(false, true), both);
    EXPECT_EQ(BuildListenText(false, false), L"Listening:" + Blanks(14) + L"UDP 162 (traps)");
}

TEST(ForwardText, ShowsTheTargetAsItWasTypedEvenWhenOff) {
    const std::wstring start = L"Forwarding:" + Blanks(10);
    EXPECT_EQ(BuildForwardText(true, L"10.1.2.3", 65535), start + L"ON  ->  10.1.2.3:65535");
    EXPECT_EQ(BuildForwardText(false, L"127.0.0.1", 162), start + L"OFF  ->  127.0.0.1:162");
    EXPECT_EQ(BuildForwardText(false, L" \u00FCber all ", 1), start + L"OFF  ->   \u00FCber all :1");
    EXPECT_EQ(BuildForwardText(true, L"", 162), start + L"ON  ->  :162");
}

TEST(PathsText, ShowsTheTwoFoldersOnTwoLines) {
    EXPECT_EQ(BuildPathsText(L"C:\\Data", L"C:\\Data\\mibs"),
              L"Data dir:" + Blanks(14) + L"C:\\Data\r\nMIB dir:" + Blanks(15) + L"C:\\Data\\mibs");
}

TEST(CountsText, ShowsPlainSignedDecimals) {
    EXPECT_EQ(BuildCountsText(0, 0), L"Loaded MIB files: 0  |  OID mappings: 0");
    EXPECT_EQ(BuildCountsText(2680, 1234567), L"Loaded MIB files: 2680  |  OID mappings: 1234567");
    EXPECT_EQ(BuildCountsText(1, std::numeric_limits<int32_t>::min()),
              L"Loaded MIB files: 1  |  OID mappings: -2147483648");
}

TEST(LastTrapText, ShowsNoneForTickZeroWhateverTheSender) {
    EXPECT_EQ(BuildLastTrapText(0, L"", 123456), L"Last trap:" + Blanks(13) + L"(none)");
    EXPECT_EQ(BuildLastTrapText(0, L"10.1.2.3:49152", 5000), L"Last trap:" + Blanks(13) + L"(none)");
}

struct AgeCase {
    uint64_t age;
    const wchar_t* shown;
    const char* why;
};
const AgeCase kAges[] = {
    {0, L"0", "just arrived"},
    {999, L"0", "the last millisecond of the first second"},
    {1000, L"1", "one whole second"},
    {1999, L"1", "cut off, not rounded"},
    {86400000, L"86400", "a day is counted in seconds"},
    {uint64_t{5000000000} * 1000, L"5000000000", "more seconds than 32 bits can represent"},
};

TEST(LastTrapText, CountsWholeSeconds) {
    for (const AgeCase& row : kAges) {
        EXPECT_EQ(BuildLastTrapText(7, L"10.1.2.3:49152", 7 + row.age),
                  L"Last trap:" + Blanks(13) + L"10.1.2.3:49152  (" + row.shown + L"s ago)")
            << row.why;
    }
}

}  // namespace
