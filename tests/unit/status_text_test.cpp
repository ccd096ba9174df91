#include "ui/status_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

std::wstring Blanks(size_t count) {
    return std::wstring(count, L' ');
}

TEST(ServerText, TellsRunningBehindEighteenBlanks) {
    EXPECT_EQ(BuildServerText(true), L"Server:" + Blanks(18) + L"RUNNING");
}

TEST(ServerText, TellsStoppedBehindEighteenBlanks) {
    EXPECT_EQ(BuildServerText(false), L"Server:" + Blanks(18) + L"STOPPED");
}

TEST(ListenText, NamesBothPortsWhileRunningWithBoth) {
    EXPECT_EQ(BuildListenText(true, true),
              L"Listening:" + Blanks(14) + L"UDP 162 (traps)  |  UDP 161 (snmp)");
}

TEST(ListenText, Names161EvenWhenItsBindFailed) {
    EXPECT_EQ(BuildListenText(true, false), BuildListenText(true, true));
}

TEST(ListenText, Names161WhileItsSocketIsOpenThoughStopped) {
    EXPECT_EQ(BuildListenText(false, true), BuildListenText(true, true));
}

TEST(ListenText, NamesOnly162WhenStopped) {
    EXPECT_EQ(BuildListenText(false, false), L"Listening:" + Blanks(14) + L"UDP 162 (traps)");
}

TEST(ForwardText, TellsTheTargetWhenOn) {
    EXPECT_EQ(BuildForwardText(true, L"10.1.2.3", 65535),
              L"Forwarding:" + Blanks(10) + L"ON  ->  10.1.2.3:65535");
}

TEST(ForwardText, TellsTheTargetWhenOffToo) {
    EXPECT_EQ(BuildForwardText(false, L"127.0.0.1", 162),
              L"Forwarding:" + Blanks(10) + L"OFF  ->  127.0.0.1:162");
}

TEST(ForwardText, ShowsAnAddressAsItWasTyped) {
    EXPECT_EQ(BuildForwardText(false, L" \u00FCber all ", 1),
              L"Forwarding:" + Blanks(10) + L"OFF  ->   \u00FCber all :1");
    EXPECT_EQ(BuildForwardText(true, L"", 162), L"Forwarding:" + Blanks(10) + L"ON  ->  :162");
}

TEST(PathsText, PutsTheTwoFoldersOnTwoLines) {
    EXPECT_EQ(BuildPathsText(L"C:\\Data", L"C:\\Data\\mibs"),
              L"Data dir:" + Blanks(14) + L"C:\\Data\r\nMIB dir:" + Blanks(15) + L"C:\\Data\\mibs");
}

TEST(CountsText, WritesPlainDecimals) {
    EXPECT_EQ(BuildCountsText(0, 0), L"Loaded MIB files: 0  |  OID mappings: 0");
    EXPECT_EQ(BuildCountsText(2680, 1234567), L"Loaded MIB files: 2680  |  OID mappings: 1234567");
}

TEST(CountsText, WritesCountsAsSigned) {
    EXPECT_EQ(BuildCountsText(1, std::numeric_limits<int32_t>::min()),
              L"Loaded MIB files: 1  |  OID mappings: -2147483648");
}

TEST(LastTrapText, SaysNoneBeforeTheFirstTrap) {
    EXPECT_EQ(BuildLastTrapText(0, L"", 123456), L"Last trap:" + Blanks(13) + L"(none)");
}

TEST(LastTrapText, SaysNoneForTickZeroWhateverTheSender) {
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
    {2000, L"2", "two whole seconds"},
    {86400000, L"86400", "a day is counted in seconds"},
    {uint64_t{5000000000} * 1000, L"5000000000", "more seconds than 32 bits hold"},
};

TEST(LastTrapText, CountsWholeSecondsCutOff) {
    for (const AgeCase& row : kAges) {
        EXPECT_EQ(BuildLastTrapText(7, L"10.1.2.3:49152", 7 + row.age),
                  L"Last trap:" + Blanks(13) + L"10.1.2.3:49152  (" + row.shown + L"s ago)")
            << row.why;
    }
}

}  // namespace
