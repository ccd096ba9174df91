// A walk through the mibs folder that breaks off. The folder seam is replaced by linking, hence a program of
// its own: no real folder breaks off on demand.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "mib/name_store.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/mib_tables.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"

namespace {

enum class WalkEnd { Whole, BrokenOff, Thrown };

// What the walks come across, and how they end.
std::vector<std::wstring> walkedFiles;
WalkEnd walkEnd = WalkEnd::Whole;

}  // namespace

std::wstring QueryLocalAppDataFolder() {
    return {};
}

bool PathExists(const std::wstring& path) {
    return QueryFileSize(path).has_value();
}

void CreateFolderWithParents(const std::wstring&) {}

bool EnumerateFolder(const std::wstring&, const std::function<void(const FolderEntry&)>& visit) {
    for (const std::wstring& name : walkedFiles) {
        visit({name, true});
    }
    if (walkEnd == WalkEnd::Thrown) {
        throw std::runtime_error("the walk broke off");
    }
    return walkEnd == WalkEnd::Whole;
}

namespace {

class BrokenWalk : public testing::TestWithParam<WalkEnd> {
  protected:
    BrokenWalk() {
        walkEnd = WalkEnd::Whole;
        AddFile(L"a.mib", "direct OBJECT IDENTIFIER ::= {\n iso org(3) x(9) -1 }\n");
        AddFile(L"b.mib", "deferred OBJECT IDENTIFIER ::= { mgmt 5 }\n");
    }
    ~BrokenWalk() override { walkedFiles.clear(); }

    static void AddFile(const std::wstring& name, std::string_view octets) {
        WriteOctets(AppPaths.mibsDir + L"\\" + name, octets);
        walkedFiles.push_back(name);
    }

    ScratchFolder folder_;
    AppPathsGuard paths_{folder_};
    FreshNameStore store_;
};

TEST_P(BrokenWalk, EndsTheLoadWithWhatItHasStoredAndItsLogLine) {
    LoadMibFolder();
    ASSERT_EQ(CountOidNames(), 2);
    RemoveFile(AppPaths.logFilePath);

    walkEnd = GetParam();
    LoadMibFolder();
    EXPECT_EQ(NameOf(L"1.3.9"), L"direct");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.5"), L"") << "nothing is resolved after a walk that broke off";
    EXPECT_EQ(CountDefinitions(), 1U);
    const std::string log = ReadOctets(AppPaths.logFilePath);
    ASSERT_GT(log.size(), kStampLength);
    EXPECT_EQ(log.substr(kStampLength), "  MIBs loaded. OID mappings: 1\r\r\n");

    walkEnd = WalkEnd::Whole;
    LoadMibFolder();
    EXPECT_EQ(CountOidNames(), 2) << "the lock is free and the next load is whole";
}

TEST_P(BrokenWalk, LeavesTheNamesSeenSoFarInTheList) {
    walkedFiles = {L"c.mib", L"no.doc", L"a.mib"};
    walkEnd = GetParam();
    EXPECT_EQ(ListMibFiles(), (std::vector<std::wstring>{L"a.mib", L"c.mib"}));
}

INSTANTIATE_TEST_SUITE_P(Each, BrokenWalk, ::testing::Values(WalkEnd::BrokenOff, WalkEnd::Thrown),
                         [](const ::testing::TestParamInfo<WalkEnd>& end) {
                             return end.param == WalkEnd::Thrown ? "Thrown" : "BrokenOff";
                         });

}  // namespace
