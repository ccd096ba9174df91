#include "platform/files.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/folders.h"
#include "tests/support/scratch_folder.h"

namespace {

class FilesTest : public testing::Test {
  protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Join(name); }

    std::string ReadFrom(uint64_t offset) const {
        std::string octets = "leftover";
        EXPECT_TRUE(ReadOctetsFrom(file_, offset, octets));
        return octets;
    }

    std::wstring Root() const { return folder_.path().wstring(); }

    ScratchFolder folder_;
    const std::wstring file_ = Path(L"file.bin");
    const std::wstring inMissingFolder_ = Path(L"missing\\file.bin");
};

std::string EveryOctet() {
    std::string octets;
    for (int code = 0; code <= 0xFF; ++code) {
        octets.push_back(static_cast<char>(code));
    }
    return octets;
}

TEST_F(FilesTest, AppendedOctetsStandBehindEachOtherUnchanged) {
    EXPECT_TRUE(AppendOctets(file_, EveryOctet()));
    EXPECT_TRUE(AppendOctets(file_, "\r\n\x1A"));
    EXPECT_EQ(ReadFrom(0), EveryOctet() + "\r\n\x1A");
}

TEST_F(FilesTest, AppendingNothingCreatesTheFile) {
    EXPECT_TRUE(AppendOctets(file_, ""));
    EXPECT_EQ(QueryFileSize(file_), 0U);
}

TEST_F(FilesTest, ReplacedOctetsAreAllThatIsLeft) {
    EXPECT_TRUE(ReplaceOctets(file_, "something long"));
    EXPECT_TRUE(ReplaceOctets(file_, "short"));
    EXPECT_EQ(ReadFrom(0), "short");
    EXPECT_TRUE(ReplaceOctets(file_, ""));
    EXPECT_EQ(QueryFileSize(file_), 0U);
}

TEST_F(FilesTest, WritingIntoAMissingFolderFails) {
    EXPECT_FALSE(AppendOctets(inMissingFolder_, "x"));
    EXPECT_FALSE(ReplaceOctets(inMissingFolder_, "x"));
    EXPECT_FALSE(PathExists(Path(L"missing")));
}

TEST_F(FilesTest, FolderIsNoFile) {
    CreateFolderWithParents(file_);
    std::string octets = "leftover";
    EXPECT_FALSE(AppendOctets(file_, "x"));
    EXPECT_FALSE(ReplaceOctets(file_, "x"));
    EXPECT_FALSE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, "");
    EXPECT_FALSE(RemoveFile(file_));
}

TEST_F(FilesTest, ReadingAMissingFileFailsAndEmptiesTheOctets) {
    std::string octets = "leftover";
    EXPECT_FALSE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, "");
}

TEST_F(FilesTest, ReadingStopsAfterTheMostOctetsWantedAndReportsTheWholeSize) {
    ASSERT_TRUE(ReplaceOctets(file_, "12345"));
    std::string octets = "leftover";
    EXPECT_EQ(ReadOctetsFrom(file_, 1, octets, 3), 5U);
    EXPECT_EQ(octets, "234");
    EXPECT_EQ(ReadOctetsFrom(file_, 3, octets, 3), 5U);
    EXPECT_EQ(octets, "45");
    EXPECT_EQ(ReadOctetsFrom(file_, 6, octets, 2), 5U);
    EXPECT_EQ(octets, "12");
    EXPECT_EQ(ReadOctetsFrom(file_, 1, octets, 0), 5U);
    EXPECT_EQ(octets, "");
}

TEST_F(FilesTest, ReadingStartsAtTheOffset) {
    ASSERT_TRUE(ReplaceOctets(file_, "12345"));
    EXPECT_EQ(ReadFrom(0), "12345");
    EXPECT_EQ(ReadFrom(4), "5");
    EXPECT_EQ(ReadFrom(5), "");
}

TEST_F(FilesTest, OffsetBeyondTheEndReadsFromTheStart) {
    ASSERT_TRUE(ReplaceOctets(file_, "12345"));
    EXPECT_EQ(ReadFrom(6), "12345");
    EXPECT_EQ(ReadFrom(UINT64_MAX), "12345");
    ASSERT_TRUE(ReplaceOctets(file_, ""));
    EXPECT_EQ(ReadFrom(1), "");
}

TEST_F(FilesTest, LargeFilesAreReadWhole) {
    std::string large;
    for (int part = 0; part < 5000; ++part) {
        large += std::to_string(part) + EveryOctet();
    }
    ASSERT_TRUE(ReplaceOctets(file_, large));
    EXPECT_EQ(QueryFileSize(file_), large.size());
    EXPECT_TRUE(ReadFrom(0) == large);
    EXPECT_TRUE(ReadFrom(large.size() - 3) == large.substr(large.size() - 3));
}

TEST_F(FilesTest, SizeOfAMissingFileIsNothing) {
    EXPECT_FALSE(QueryFileSize(file_).has_value());
}

TEST_F(FilesTest, SizeFollowsTheFile) {
    ASSERT_TRUE(AppendOctets(file_, "123"));
    EXPECT_EQ(QueryFileSize(file_), 3U);
    ASSERT_TRUE(AppendOctets(file_, "45"));
    EXPECT_EQ(QueryFileSize(file_), 5U);
}

TEST_F(FilesTest, CopyingReplacesAnExistingTarget) {
    const std::wstring source = Path(L"source.bin");
    ASSERT_TRUE(ReplaceOctets(source, EveryOctet()));
    EXPECT_TRUE(CopyFileOver(source, file_)) << "a new one";
    EXPECT_EQ(ReadFrom(0), EveryOctet());
    ASSERT_TRUE(ReplaceOctets(source, "new"));
    EXPECT_TRUE(CopyFileOver(source, file_)) << "over the old one";
    EXPECT_EQ(ReadFrom(0), "new");
    ASSERT_TRUE(ReplaceOctets(source, ""));
    EXPECT_TRUE(CopyFileOver(source, file_)) << "an empty one";
    EXPECT_EQ(ReadFrom(0), "");
}

TEST_F(FilesTest, FailedCopyLeavesTheTargetUnchanged) {
    ASSERT_TRUE(ReplaceOctets(file_, "old"));
    EXPECT_FALSE(CopyFileOver(Path(L"missing.bin"), file_));
    EXPECT_EQ(ReadFrom(0), "old");
    EXPECT_FALSE(CopyFileOver(file_, inMissingFolder_));
}

TEST_F(FilesTest, RemovedFileIsGoneAndAMissingOneCountsAsRemoved) {
    ASSERT_TRUE(ReplaceOctets(file_, "x"));
    EXPECT_TRUE(RemoveFile(file_));
    EXPECT_FALSE(PathExists(file_));
    EXPECT_TRUE(RemoveFile(file_));
}

TEST_F(FilesTest, AFolderIsNoFileToRemove) {
    const std::wstring folder = Path(L"folder");
    CreateFolderWithParents(folder);
    EXPECT_FALSE(RemoveFile(folder));
    EXPECT_TRUE(PathExists(folder));
}

TEST_F(FilesTest, NamesOutsideAsciiAreKeptExactly) {
    const std::wstring path = Path(L"J\u00FCrgen \u0416\u4E2D \U0001F600.txt");
    EXPECT_TRUE(AppendOctets(path, "x"));
    bool found = false;
    EXPECT_TRUE(EnumerateFolder(
        Root(), [&](const FolderEntry& entry) { found = found || Path(entry.name) == path; }));
    EXPECT_TRUE(found);
    EXPECT_TRUE(RemoveFile(path));
}

}  // namespace
