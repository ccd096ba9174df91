#include "core/data_files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/lock_waits.h"
#include "tests/support/scratch_folder.h"

namespace {

class DataFilesTest : public testing::Test {
  protected:
    std::string Read() const { return ReadOctets(file_); }

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.txt");
    const std::wstring inMissingFolder_ = folder_.Join(L"missing\\file.txt");
};

// ---- Writing

TEST_F(DataFilesTest, TextWithoutLineEndGetsOne) {
    AppendToFile(file_, L"one");
    EXPECT_EQ(Read(), "one\r\r\n");
}

TEST_F(DataFilesTest, TextThatEndsInALineFeedGetsNothingAdded) {
    AppendToFile(file_, L"one\r\n");
    AppendToFile(file_, L"two\n");
    EXPECT_EQ(Read(), "one\r\r\ntwo\r\n");
}

TEST_F(DataFilesTest, EmptyTextOnlyCreatesTheFile) {
    AppendToFile(file_, L"");
    EXPECT_TRUE(PathExists(file_));
    EXPECT_EQ(Read(), "");
    AppendToFile(file_, L"one");
    AppendToFile(file_, L"");
    EXPECT_EQ(Read(), "one\r\r\n");
}

TEST_F(DataFilesTest, AppendingNeverTruncates) {
    WriteOctets(file_, "before\r\r\n");
    AppendToFile(file_, L"after");
    EXPECT_EQ(Read(), "before\r\r\nafter\r\r\n");
}

TEST_F(DataFilesTest, TextAfterACutOneContinuesItsLine) {
    AppendToFile(file_, L"cut\u0100 here\r\n");
    AppendToFile(file_, L"\u20AC all of it");
    AppendToFile(file_, L"next");
    EXPECT_EQ(Read(), "cutnext\r\r\n");
}

TEST_F(DataFilesTest, FileThatCannotBeOpenedIsPassedOver) {
    AppendToFile(inMissingFolder_, L"one");
    ClearFile(inMissingFolder_);
    EXPECT_FALSE(ReplaceFileText(inMissingFolder_, L"one"));
    EXPECT_EQ(ReadWholeFile(inMissingFolder_), L"");
    EXPECT_EQ(ReadFileFrom(inMissingFolder_, 0), L"");
    EXPECT_FALSE(PathExists(folder_.Join(L"missing")));
}

TEST_F(DataFilesTest, FolderInThePlaceOfAFileIsPassedOver) {
    CreateFolderWithParents(file_);
    AppendToFile(file_, L"one");
    ClearFile(file_);
    EXPECT_FALSE(ReplaceFileText(file_, L"one"));
    EXPECT_EQ(ReadWholeFile(file_), L"");
    EXPECT_EQ(ReadFileFrom(file_, 0), L"");
}

TEST_F(DataFilesTest, ReplacingDropsTheOldContentAndAddsNoLineEnd) {
    WriteOctets(file_, "a much longer content than the new one");
    EXPECT_TRUE(ReplaceFileText(file_, L"new\r\nlast"));
    EXPECT_EQ(Read(), "new\r\r\nlast");
}

TEST_F(DataFilesTest, ReplacingCutsAtACharacterAbove0xFF) {
    EXPECT_TRUE(ReplaceFileText(file_,
                                L"a\u20AC"
                                L"b"));
    EXPECT_EQ(Read(), "a");
}

TEST_F(DataFilesTest, ClearedFileIsThereAndEmpty) {
    WriteOctets(file_, "something");
    ClearFile(file_);
    EXPECT_TRUE(PathExists(file_));
    EXPECT_EQ(Read(), "");
}

TEST_F(DataFilesTest, NoFileStaysOpenBetweenCalls) {
    AppendToFile(file_, L"one");
    EXPECT_TRUE(RemoveFile(file_)) << "a handle that stayed open would forbid it";
    AppendToFile(file_, L"two");
    EXPECT_EQ(Read(), "two\r\r\n");
}

// ---- Reading the whole

TEST_F(DataFilesTest, MissingAndEmptyFilesReadAsEmpty) {
    EXPECT_EQ(ReadWholeFile(file_), L"");
    WriteOctets(file_, "");
    EXPECT_EQ(ReadWholeFile(file_), L"");
}

TEST_F(DataFilesTest, WhatWasAppendedReadsBackWithItsOwnLineEnds) {
    AppendToFile(file_, L"caf\u00E9\r\n");
    AppendToFile(file_, L"two");
    EXPECT_EQ(ReadWholeFile(file_), L"caf\u00E9\r\ntwo\r\n");
}

TEST_F(DataFilesTest, WholeFileIsReadOctetByOctetAndNotAsUtf8) {
    WriteOctets(file_, "caf\xC3\xA9");
    EXPECT_EQ(ReadWholeFile(file_), L"caf\u00C3\u00A9");
}

TEST_F(DataFilesTest, Octet0x1AEndsTheWholeFile) {
    WriteOctets(file_, "seen\x1Anot seen");
    EXPECT_EQ(ReadWholeFile(file_), L"seen");
}

// ---- Reading from an offset

TEST_F(DataFilesTest, OffsetEqualToTheSizeReadsNothing) {
    WriteOctets(file_, "12345");
    EXPECT_EQ(ReadFileFrom(file_, 5), L"");
}

TEST_F(DataFilesTest, OffsetBeyondTheSizeReadsTheWholeFile) {
    WriteOctets(file_, "12345");
    EXPECT_EQ(ReadFileFrom(file_, 6), L"12345");
    EXPECT_EQ(ReadFileFrom(file_, UINT64_MAX), L"12345");
}

TEST_F(DataFilesTest, OffsetWithinTheFileReadsTheRest) {
    WriteOctets(file_, "12345");
    EXPECT_EQ(ReadFileFrom(file_, 0), L"12345");
    EXPECT_EQ(ReadFileFrom(file_, 3), L"45");
    EXPECT_EQ(ReadFileFrom(file_, 4), L"5");
}

TEST_F(DataFilesTest, LineEndsAnd0x1AAreReadAsTheyAre) {
    WriteOctets(file_,
                "a\r\r\nb\r\nc\x1A"
                "d\n");
    EXPECT_EQ(ReadFileFrom(file_, 0),
              L"a\r\r\nb\r\nc\x1A"
              L"d\n");
}

TEST_F(DataFilesTest, ValidUtf8IsDecodedAsSuch) {
    WriteOctets(file_, "caf\xC3\xA9");
    EXPECT_EQ(ReadFileFrom(file_, 0), L"caf\u00E9");
}

TEST_F(DataFilesTest, InvalidUtf8IsDecodedAsAnsi) {
    WriteOctets(file_, "\xE9");
    EXPECT_EQ(ReadFileFrom(file_, 0), L"\u00E9");
    WriteOctets(file_, "\xC3\xA9 and \xE9");
    EXPECT_EQ(ReadFileFrom(file_, 0), L"\u00C3\u00A9 and \u00E9");
}

TEST_F(DataFilesTest, OnlyWhatStandsBehindTheOffsetDecidesTheEncoding) {
    WriteOctets(file_, "\xE9\xC3\xA9");
    EXPECT_EQ(ReadFileFrom(file_, 1), L"\u00E9");
    WriteOctets(file_, "\xC3\xA9");
    EXPECT_EQ(ReadFileFrom(file_, 1), L"\u00A9") << "half a sequence is no UTF-8";
}

// ---- The lock

TEST_F(DataFilesTest, NothingIsWrittenWhileAnotherHoldsTheFileLock) {
    EXPECT_TRUE(WaitsFor(FileLock, [&] { AppendToFile(file_, L"one"); }));
    EXPECT_EQ(Read(), "one\r\r\n");
}

TEST_F(DataFilesTest, ReaderNeverSeesHalfARecord) {
    const std::wstring record = std::wstring(3000, L'x') + L"\r\n";
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int round = 0; round < 100; ++round) {
            AppendToFile(file_, record);
        }
        done = true;
    });
    size_t halves = 0;
    size_t seen = 0;
    while (!done || seen < 100 * record.size()) {
        const std::wstring text = ReadWholeFile(file_);
        halves += text.size() % record.size() != 0;
        seen = text.size();
    }
    writer.join();
    EXPECT_EQ(halves, 0U);
}

}  // namespace
