#include "core/activity_log.h"

#include <gtest/gtest.h>

#include <thread>

#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/timestamp.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"

namespace {

class ActivityLogTest : public testing::Test {
  protected:
    static std::string ReadLog() { return ReadOctets(AppPaths.logFilePath); }

    ScratchFolder folder_;
    const AppPathsGuard paths_{folder_};
};

bool StartsWithStamp(std::string_view line) {
    return IsStamp(line.substr(0, kStampLength)) && line.substr(kStampLength).starts_with("  ");
}

TEST_F(ActivityLogTest, LineIsStampTwoBlanksMessageAndThreeOctetLineEnd) {
    LogMessage(L"Config saved.");
    const std::string log = ReadLog();
    ASSERT_TRUE(StartsWithStamp(log)) << log;
    EXPECT_EQ(log.substr(23), "  Config saved.\r\r\n");
}

TEST_F(ActivityLogTest, StampIsThatOfTheCall) {
    const std::wstring before = FormatTimestamp();
    LogMessage(L"x");
    const std::wstring after = FormatTimestamp();
    const std::string log = ReadLog();
    const std::wstring stamp(log.begin(), log.begin() + 23);
    EXPECT_TRUE(before > after || (before <= stamp && stamp <= after)) << log;
}

TEST_F(ActivityLogTest, LinesAreAppended) {
    LogMessage(L"one");
    LogMessage(L"");
    LogMessage(L"three");
    const std::string log = ReadLog();
    EXPECT_EQ(log.size(), 3 * (23 + 2 + 3) + std::string("onethree").size());
    EXPECT_EQ(log.substr(23, 8), "  one\r\r\n");
    EXPECT_EQ(log.substr(log.size() - 10), "  three\r\r\n");
}

TEST_F(ActivityLogTest, MessageThatEndsInALineFeedGetsItsLineEndAllTheSame) {
    LogMessage(L"one\n");
    EXPECT_EQ(ReadLog().substr(23), "  one\r\n\r\r\n");
}

TEST_F(ActivityLogTest, CharacterAbove0xFFCutsTheLineAndTheNextOneFollowsOnIt) {
    LogMessage(L"caf\u00E9 \u20AC lost");
    LogMessage(L"next");
    const std::string log = ReadLog();
    EXPECT_EQ(log.substr(23, 7), "  caf\xE9 ");
    EXPECT_TRUE(StartsWithStamp(log.substr(30))) << log;
    EXPECT_EQ(log.substr(30 + 23), "  next\r\r\n");
}

TEST_F(ActivityLogTest, LogThatCannotBeOpenedIsPassedOver) {
    AppPaths.logFilePath = AppPaths.dataDir + L"\\missing\\log.txt";
    LogMessage(L"nobody hears this");
    EXPECT_EQ(ReadWholeFile(AppPaths.logFilePath), L"");
}

TEST_F(ActivityLogTest, LinesOfTwoThreadsNeverMix) {
    constexpr int kLinesEach = 200;
    const auto logMany = [](const wchar_t* message) {
        for (int line = 0; line < kLinesEach; ++line) {
            LogMessage(message);
        }
    };
    std::thread other(logMany, L"from the other thread");
    logMany(L"from this thread");
    other.join();
    int fromThis = 0;
    int fromOther = 0;
    const std::string log = ReadLog();
    for (size_t at = 0; at < log.size();) {
        const size_t end = log.find("\r\r\n", at);
        ASSERT_NE(end, std::string::npos);
        const std::string line = log.substr(at, end - at);
        ASSERT_TRUE(StartsWithStamp(line)) << line;
        fromThis += line.substr(25) == "from this thread";
        fromOther += line.substr(25) == "from the other thread";
        at = end + 3;
    }
    EXPECT_EQ(fromThis, kLinesEach);
    EXPECT_EQ(fromOther, kLinesEach);
}

}  // namespace
