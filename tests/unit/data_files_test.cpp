#include "core/data_files.h"

#include <gtest/gtest.h>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"

namespace {

class DataFilesTest : public testing::Test {
  protected:
    std::string Read() const { return ReadOctets(file_); }

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.txt");
};

// ---- Writing

TEST_F(DataFilesTest, AppendingAddsOnlyMissingLineEnds) {
    WriteOctets(file_, "before\r\r\n");
    AppendToFile(file_, L"one");
    AppendToFile(file_, L"two\r\n");
    AppendToFile(file_, L"three\n");
    EXPECT_EQ(Read(), "before\r\r\none\r\r\ntwo\r\r\nthree\r\n");
}

TEST_F(DataFilesTest, AppendingEmptyTextOnlyCreatesTheFile) {
    AppendToFile(file_, L"");
    EXPECT_TRUE(PathExists(file_));
    AppendToFile(file_, L"one");
    AppendToFile(file_, L"");
    EXPECT_EQ(Read(), "one\r\r\n");
}

TEST_F(DataFilesTest, TextAfterATruncatedOneContinuesItsLine) {
    AppendToFile(file_, L"cut\u0100 here\r\n");
    AppendToFile(file_, L"\u20AC all of it");
    AppendToFile(file_, L"next");
    EXPECT_EQ(Read(), "cutnext\r\r\n");
}

TEST_F(DataFilesTest, FilesThatCannotBeOpenedAreIgnored) {
    CreateFolderWithParents(folder_.Join(L"folder"));
    for (const std::wstring& path : {folder_.Join(L"missing\\file.txt"), folder_.Join(L"folder")}) {
        AppendToFile(path, L"one");
        ClearFile(path);
        EXPECT_FALSE(ReplaceFileText(path, L"one"));
        EXPECT_EQ(ReadWholeFile(path), L"");
        EXPECT_EQ(ReadFileFrom(path, 0), L"");
    }
    EXPECT_FALSE(PathExists(folder_.Join(L"missing")));
}

TEST_F(DataFilesTest, ReplacingDropsTheOldContentAndAddsNoLineEnd) {
    WriteOctets(file_, "a much longer content than the new one");
    EXPECT_TRUE(ReplaceFileText(file_, L"new\r\nlast"));
    EXPECT_EQ(Read(), "new\r\r\nlast");
}

TEST_F(DataFilesTest, ClearedFileExistsAndIsEmpty) {
    WriteOctets(file_, "something");
    ClearFile(file_);
    EXPECT_EQ(QueryFileSize(file_), 0U);
}

TEST_F(DataFilesTest, NoFileStaysOpenBetweenCalls) {
    AppendToFile(file_, L"one");
    EXPECT_TRUE(RemoveFile(file_)) << "an open handle would prevent it";
    AppendToFile(file_, L"two");
    EXPECT_EQ(Read(), "two\r\r\n");
}

// ---- Reading a whole file

TEST_F(DataFilesTest, MissingAndEmptyFilesReadAsEmpty) {
    EXPECT_EQ(ReadWholeFile(file_), L"");
    WriteOctets(file_, "");
    EXPECT_EQ(ReadWholeFile(file_), L"");
}

TEST_F(DataFilesTest, AppendedTextReadsBackWithItsOwnLineEnds) {
    AppendToFile(file_, L"caf\u00E9\r\n");
    AppendToFile(file_, L"two");
    EXPECT_EQ(ReadWholeFile(file_), L"caf\u00E9\r\ntwo\r\n");
}

TEST_F(DataFilesTest, WholeFileIsReadAsOctetsUpToOctet0x1A) {
    WriteOctets(file_, "caf\xC3\xA9\x1Anot seen");
    EXPECT_EQ(ReadWholeFile(file_), L"caf\u00C3\u00A9");
}

// ---- Reading from an offset

TEST_F(DataFilesTest, OffsetBeyondTheSizeReadsTheWholeFile) {
    WriteOctets(file_, "12345");
    EXPECT_EQ(ReadFileFrom(file_, 0), L"12345");
    EXPECT_EQ(ReadFileFrom(file_, 4), L"5");
    EXPECT_EQ(ReadFileFrom(file_, 5), L"") << "equal to the size";
    EXPECT_EQ(ReadFileFrom(file_, 6), L"12345");
    EXPECT_EQ(ReadFileFrom(file_, UINT64_MAX), L"12345");
}

TEST_F(DataFilesTest, LineEndsAnd0x1AAreReadUnchanged) {
    WriteOctets(file_,
                "a\r\r\nb\r\nc\x1A"
                "d\n");
    EXPECT_EQ(ReadFileFrom(file_, 0),
              L"a\r\r\nb\r\nc\x1A"
              L"d\n");
}

TEST_F(DataFilesTest, TextAfterTheOffsetIsUtf8IfValidElseAnsi) {
    const auto readFrom = [&](uint64_t offset, std::string_view octets) {
        WriteOctets(file_, octets);
        return ReadFileFrom(file_, offset);
    };
    EXPECT_EQ(readFrom(0, "caf\xC3\xA9"), L"caf\u00E9");
    EXPECT_EQ(readFrom(0, "\xE9"), L"\u00E9");
    EXPECT_EQ(readFrom(0, "\xC3\xA9 and \xE9"), L"\u00C3\u00A9 and \u00E9");
    EXPECT_EQ(readFrom(1, "\xE9\xC3\xA9"), L"\u00E9");
    EXPECT_EQ(readFrom(1, "\xC3\xA9"), L"\u00A9") << "half a sequence is not UTF-8";
}

// ---- The activity log

class ActivityLogTest : public testing::Test {
  protected:
    ScratchFolder folder_;
    const AppPathsGuard paths_{folder_};
};

TEST_F(ActivityLogTest, LineIsStampTwoBlanksMessageAndThreeOctetLineEnd) {
    LogMessage(L"Config saved.");
    LogMessage(L"one\n");
    const std::string log = ReadOctets(AppPaths.logFilePath);
    ASSERT_TRUE(IsStamp(log.substr(0, kStampLength))) << log;
    EXPECT_EQ(log.substr(kStampLength, 18), "  Config saved.\r\r\n");
    EXPECT_EQ(log.substr(18 + 2 * kStampLength), "  one\r\n\r\r\n") << "a line end is always added";
}

TEST_F(ActivityLogTest, CharacterAbove0xFFTruncatesTheLineAndTheNextOneContinuesIt) {
    LogMessage(L"caf\u00E9 \u20AC lost");
    LogMessage(L"next");
    const std::string log = ReadOctets(AppPaths.logFilePath);
    EXPECT_EQ(log.substr(kStampLength, 7), "  caf\xE9 ");
    EXPECT_TRUE(IsStamp(log.substr(kStampLength + 7, kStampLength))) << log;
    EXPECT_EQ(log.substr(7 + 2 * kStampLength), "  next\r\r\n");
}

}  // namespace
