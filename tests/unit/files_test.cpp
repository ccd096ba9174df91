#include "platform/files.h"

#include <gtest/gtest.h>

#include "platform/folders.h"
#include "tests/support/scratch_folder.h"

namespace {

class FilesTest : public testing::Test {
  protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Join(name); }

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

TEST_F(FilesTest, AppendedOctetsAreStoredInOrderAndUnchanged) {
    EXPECT_TRUE(AppendOctets(file_, ""));
    EXPECT_EQ(QueryFileSize(file_), 0U);
    EXPECT_TRUE(AppendOctets(file_, EveryOctet()));
    EXPECT_TRUE(AppendOctets(file_, "\r\n\x1A"));
    EXPECT_EQ(ReadOctets(file_), EveryOctet() + "\r\n\x1A");
    EXPECT_EQ(QueryFileSize(file_), 256U + 3);
}

TEST_F(FilesTest, ReplacingRemovesTheOldContent) {
    EXPECT_TRUE(ReplaceOctets(file_, "something long"));
    EXPECT_TRUE(ReplaceOctets(file_, "short"));
    EXPECT_EQ(ReadOctets(file_), "short");
    EXPECT_TRUE(ReplaceOctets(file_, ""));
    EXPECT_EQ(QueryFileSize(file_), 0U);
}

TEST_F(FilesTest, WritingIntoAMissingFolderFails) {
    EXPECT_FALSE(AppendOctets(inMissingFolder_, "x"));
    EXPECT_FALSE(ReplaceOctets(inMissingFolder_, "x"));
    EXPECT_FALSE(PathExists(Path(L"missing")));
}

TEST_F(FilesTest, FileOperationsFailOnAFolder) {
    CreateFolderWithParents(file_);
    std::string octets = "leftover";
    EXPECT_FALSE(AppendOctets(file_, "x"));
    EXPECT_FALSE(ReplaceOctets(file_, "x"));
    EXPECT_FALSE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, "");
    EXPECT_FALSE(RemoveFile(file_));
    EXPECT_TRUE(PathExists(file_));
}

TEST_F(FilesTest, MissingFileHasNeitherContentNorSize) {
    std::string octets = "leftover";
    EXPECT_FALSE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, "");
    EXPECT_FALSE(QueryFileSize(file_).has_value());
}

TEST_F(FilesTest, ReadingStartsAtTheOffsetOrAt0IfThatIsBeyondTheEnd) {
    struct Case {
        uint64_t offset;
        uint64_t maxCount;
        const char* octets;
    };
    ASSERT_TRUE(ReplaceOctets(file_, "12345"));
    for (const auto& [offset, maxCount, expected] : {Case{0, UINT64_MAX, "12345"},
                                                     {4, UINT64_MAX, "5"},
                                                     {5, UINT64_MAX, ""},
                                                     {6, UINT64_MAX, "12345"},
                                                     {UINT64_MAX, UINT64_MAX, "12345"},
                                                     {1, 3, "234"},
                                                     {3, 3, "45"},
                                                     {6, 2, "12"},
                                                     {1, 0, ""}}) {
        std::string octets = "leftover";
        EXPECT_EQ(ReadOctetsFrom(file_, offset, octets, maxCount), 5U);
        EXPECT_EQ(octets, expected) << offset << " " << maxCount;
    }
}

TEST_F(FilesTest, CopyingReplacesAnExistingTarget) {
    const std::wstring source = Path(L"source.bin");
    ASSERT_TRUE(ReplaceOctets(source, EveryOctet()));
    EXPECT_TRUE(CopyFileOver(source, file_)) << "a new one";
    EXPECT_EQ(ReadOctets(file_), EveryOctet());
    ASSERT_TRUE(ReplaceOctets(source, "new"));
    EXPECT_TRUE(CopyFileOver(source, file_)) << "over the old one";
    EXPECT_EQ(ReadOctets(file_), "new");
    ASSERT_TRUE(ReplaceOctets(source, ""));
    EXPECT_TRUE(CopyFileOver(source, file_)) << "an empty one";
    EXPECT_EQ(ReadOctets(file_), "");
}

TEST_F(FilesTest, FailedCopyLeavesTheTargetUnchanged) {
    ASSERT_TRUE(ReplaceOctets(file_, "old"));
    EXPECT_FALSE(CopyFileOver(Path(L"missing.bin"), file_));
    EXPECT_EQ(ReadOctets(file_), "old");
    EXPECT_FALSE(CopyFileOver(file_, inMissingFolder_));
}

TEST_F(FilesTest, RemovingAMissingFileSucceeds) {
    ASSERT_TRUE(ReplaceOctets(file_, "x"));
    EXPECT_TRUE(RemoveFile(file_));
    EXPECT_FALSE(PathExists(file_));
    EXPECT_TRUE(RemoveFile(file_));
}

TEST_F(FilesTest, NonAsciiNamesAreExact) {
    const std::wstring path = Path(L"J\u00FCrgen \u0416\u4E2D \U0001F600.txt");
    EXPECT_TRUE(AppendOctets(path, "x"));
    bool found = false;
    EXPECT_TRUE(EnumerateFolder(folder_.path().wstring(), [&](const FolderEntry& entry) {
        found = found || Path(entry.name) == path;
    }));
    EXPECT_TRUE(found);
    EXPECT_TRUE(RemoveFile(path));
}

}  // namespace
