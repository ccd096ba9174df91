#include "platform/folders.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "platform/files.h"
#include "tests/support/scratch_folder.h"

namespace {

class FoldersTest : public testing::Test {
  protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Join(name); }

    // The entries by name; true for a regular file.
    std::map<std::wstring, bool> Enumerate() const {
        std::map<std::wstring, bool> entries;
        EXPECT_TRUE(EnumerateFolder(Root(), [&](const FolderEntry& entry) {
            EXPECT_TRUE(entries.emplace(entry.name, entry.isRegularFile).second) << "visited twice";
        }));
        return entries;
    }

    std::wstring Root() const { return folder_.path().wstring(); }

    ScratchFolder folder_;
};

using Entries = std::map<std::wstring, bool>;

TEST_F(FoldersTest, EntriesAreVisitedOnceWithTheirTypesAndFoldersAreNotEntered) {
    EXPECT_EQ(Enumerate(), Entries());
    AppendOctets(Path(L"a.mib"), "x");
    AppendOctets(Path(L".mib"), "");
    AppendOctets(Path(L"J\u00FCrgen.txt"), "");
    CreateFolderWithParents(Path(L"x.mib"));
    AppendOctets(Path(L"x.mib\\inside.mib"), "x");
    EXPECT_EQ(Enumerate(),
              (Entries{{L"a.mib", true}, {L".mib", true}, {L"J\u00FCrgen.txt", true}, {L"x.mib", false}}));
}

TEST_F(FoldersTest, MissingFoldersAndFilesCannotBeEnumerated) {
    const auto visit = [](const FolderEntry&) { FAIL() << "nothing to visit"; };
    AppendOctets(Path(L"file"), "x");
    EXPECT_FALSE(EnumerateFolder(Path(L"missing"), visit));
    EXPECT_FALSE(EnumerateFolder(Path(L"file"), visit));
}

TEST_F(FoldersTest, VisitorExceptionsPropagate) {
    AppendOctets(Path(L"file"), "x");
    const auto visit = [](const FolderEntry&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(EnumerateFolder(Root(), visit), std::runtime_error);
}

TEST_F(FoldersTest, PathExistsForFilesAndFolders) {
    AppendOctets(Path(L"file"), "x");
    EXPECT_TRUE(PathExists(Root()));
    EXPECT_TRUE(PathExists(Path(L"file")));
    EXPECT_FALSE(PathExists(Path(L"missing")));
    EXPECT_FALSE(PathExists(Path(L"missing\\file")));
}

TEST_F(FoldersTest, MissingParentsAreCreatedToo) {
    CreateFolderWithParents(Path(L"one\\two \u0416\\three"));
    EXPECT_TRUE(PathExists(Path(L"one\\two \u0416\\three")));
    EXPECT_EQ(Enumerate(), (Entries{{L"one", false}}));
}

TEST_F(FoldersTest, CreatingAFolderThatExistsChangesNothing) {
    CreateFolderWithParents(Path(L"one"));
    AppendOctets(Path(L"one\\file"), "x");
    CreateFolderWithParents(Path(L"one"));
    EXPECT_TRUE(PathExists(Path(L"one\\file")));
}

TEST_F(FoldersTest, FolderThatCannotBeCreatedIsIgnored) {
    AppendOctets(Path(L"file"), "x");
    CreateFolderWithParents(Path(L"file\\below"));
    EXPECT_FALSE(PathExists(Path(L"file\\below")));
    EXPECT_EQ(QueryFileSize(Path(L"file")), 1U);
}

}  // namespace
