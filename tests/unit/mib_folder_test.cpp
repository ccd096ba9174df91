#include "mib/mib_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "core/app_paths.h"
#include "mib/name_store.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/mib_tables.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/stamps.h"

namespace {

using Names = std::vector<std::wstring>;

class MibFolder : public testing::Test {
  protected:
    static void WriteMib(std::wstring_view name, std::string_view octets) {
        WriteOctets(AppPaths.mibsDir + L"\\" + std::wstring(name), octets);
    }
    static void RemoveMib(std::wstring_view name) {
        EXPECT_TRUE(RemoveFile(AppPaths.mibsDir + L"\\" + std::wstring(name)));
    }
    void MakeSubFolder(const char* name) const {
        std::filesystem::create_directory(folder_.path() / "mibs" / name);
    }

    // The log without its first stamp; removes the file.
    static std::string DrainLog() {
        const std::string log = ReadOctets(AppPaths.logFilePath);
        RemoveFile(AppPaths.logFilePath);
        EXPECT_TRUE(IsStamp(std::string_view(log).substr(0, kStampLength))) << log;
        return log.substr(std::min(log.size(), kStampLength));
    }

    ScratchFolder folder_;
    AppPathsGuard paths_{folder_};
    FreshNameStore store_;
};

// The folder's entries in the order in which the system lists and a load reads them.
Names ListInLoadOrder() {
    Names names;
    EnumerateFolder(AppPaths.mibsDir, [&](const FolderEntry& entry) { names.push_back(entry.name); });
    return names;
}

TEST(IsMibFile, AcceptsThreeExtensionsInAnyLetterCase) {
    for (const wchar_t* path :
         {L"a.mib", L"IF-MIB.MIB", L"rfc1213.txt", L"a.TxT", L"vendor.My", L"a.b.mib", L".mib",
          L"C:\\mibs\\.my", L"C:\\data.old\\mibs\\a.mib", L"C:\\Program Files\\a.mib", L"a. b.mib"}) {
        EXPECT_TRUE(IsMibFile(path)) << path;
    }
    for (const wchar_t* path :
         {L"a.mib.bak", L"IF-MIB", L"mib", L"a.mi", L"a.mibs", L"a.m", L"a.", L"", L"a.text", L"a.mib~",
          L"a.m\u0131b", L"C:\\mibs.txt\\readme", L"a.mib ", L"a.mi b"}) {
        EXPECT_FALSE(IsMibFile(path)) << path;
    }
}

TEST_F(MibFolder, LoadLogsTheCountInOneLine) {
    WriteMib(L"a.mib",
             "a OBJECT-TYPE\n::= { mgmt 1 }\nb OBJECT-TYPE\n::= { mgmt 2 }\nc OBJECT-TYPE\n::= { no 3 }\n");
    LoadMibFolder();
    EXPECT_EQ(DrainLog(), "  MIBs loaded. OID mappings: 2\r\r\n");
}

TEST_F(MibFolder, MissingFolderLogsZeroAndRemovesTheOldNames) {
    WriteMib(L"a.mib", "a OBJECT-TYPE\n::= { mgmt 1 }\n");
    LoadMibFolder();
    EXPECT_EQ(DrainLog(), "  MIBs loaded. OID mappings: 1\r\r\n");
    AppPaths.mibsDir += L"\\none";
    LoadMibFolder();
    EXPECT_EQ(DrainLog(), "  MIBs loaded. OID mappings: 0\r\r\n");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"");
}

TEST_F(MibFolder, FileWithTheExtensionMyIsLoaded) {
    WriteMib(L"IF-MIB.my", "ifMIB MODULE-IDENTITY\n::= { mib-2 31 }\n");
    LoadMibFolder();
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1.31"), L"ifMIB");
    EXPECT_EQ(ListMibFiles(), Names{L"IF-MIB.my"});
}

TEST_F(MibFolder, OtherFilesAndSubFoldersAreNeitherParsedNorListed) {
    MakeSubFolder("x.mib");
    WriteMib(L"x.mib\\inside.mib", "a OBJECT-TYPE\n::= { mgmt 1 }\n");
    WriteMib(L"a.mib.bak", "c OBJECT-TYPE\n::= { mgmt 3 }\n");
    WriteMib(L"d", "d OBJECT-TYPE\n::= { mgmt 4 }\n");
    WriteMib(L"y.mib", "b OBJECT-TYPE\n::= { mgmt 2 }\n");
    LoadMibFolder();
    EXPECT_EQ(CountOidNames(), 1);
    EXPECT_EQ(NameOf(L"1.3.6.1.2.2"), L"b");
    EXPECT_EQ(ListMibFiles(), Names{L"y.mib"});
}

TEST_F(MibFolder, LaterFileReplacesTheDefinitionOfAName) {
    WriteMib(L"one.mib", "twice OBJECT-TYPE\n::= { mgmt 1 }\n");
    WriteMib(L"two.mib", "twice OBJECT-TYPE\n::= { private 2 }\n");
    LoadMibFolder();
    const bool twoIsLater = ListInLoadOrder().back() == L"two.mib";
    EXPECT_EQ(DefinitionOf(L"twice"), (twoIsLater ? Definition{L"private", 2} : Definition{L"mgmt", 1}));
    EXPECT_EQ(OidOf(L"twice"), twoIsLater ? L"1.3.6.1.4.2" : L"1.3.6.1.2.1");
    EXPECT_EQ(CountOidNames(), 1);
}

TEST_F(MibFolder, ParentMayBeInAnyFile) {
    WriteMib(L"one.mib", "a OBJECT-TYPE\n::= { b 1 }\nd OBJECT-TYPE\n::= { c 4 }\n");
    WriteMib(L"two.mib", "b OBJECT-TYPE\n::= { mgmt 2 }\nc OBJECT-TYPE\n::= { a 3 }\n");
    LoadMibFolder();
    EXPECT_EQ(NameOf(L"1.3.6.1.2.2.1.3.4"), L"d");
    EXPECT_EQ(CountOidNames(), 4);
}

TEST_F(MibFolder, IdentifierReadInFullWinsOverPendingDefinitionsOfAllFiles) {
    const char* deferred = "deferred OBJECT-TYPE\n::= { mgmt 1 }\n";
    const char* direct = "direct OBJECT IDENTIFIER ::= { mib-2 }\n";
    for (const bool directFirst : {true, false}) {
        WriteMib(L"one.mib", directFirst ? direct : deferred);
        WriteMib(L"two.mib", directFirst ? deferred : direct);
        LoadMibFolder();
        EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"direct");
        EXPECT_EQ(OidOf(L"deferred"), L"1.3.6.1.2.1");
    }
}

TEST_F(MibFolder, DeletedFilesLoseTheirNamesAtTheNextLoad) {
    WriteMib(L"one.mib", "a OBJECT-TYPE\n::= { mgmt 1 }\nb OBJECT IDENTIFIER ::= { internet }\n");
    LoadMibFolder();
    EXPECT_EQ(DrainLog(), "  MIBs loaded. OID mappings: 2\r\r\n");
    RemoveMib(L"one.mib");
    LoadMibFolder();
    EXPECT_EQ(DrainLog(), "  MIBs loaded. OID mappings: 0\r\r\n");
    EXPECT_EQ(CountOidNames(), 0);
    EXPECT_EQ(CountDefinitions(), 0U);
    EXPECT_EQ(OidOf(L"b"), L"");
    EXPECT_EQ(NameOf(L"1.3.6.1.2.1"), L"");
}

TEST_F(MibFolder, ListIsSortedByCodeUnit) {
    for (const wchar_t* name : {L"a.mib", L"Z.mib", L"b-1.txt", L"b.my", L"_.mib", L"10.mib", L"9.mib",
                                L"Stra\u00DFe \u4E2D.mib"}) {
        WriteMib(name, "");
    }
    EXPECT_EQ(ListMibFiles(), (Names{L"10.mib", L"9.mib", L"Stra\u00DFe \u4E2D.mib", L"Z.mib", L"_.mib",
                                     L"a.mib", L"b-1.txt", L"b.my"}));
}

TEST_F(MibFolder, ListShowsTheFolderNotTheLastLoad) {
    WriteMib(L"one.mib", "");
    LoadMibFolder();
    WriteMib(L"two.mib", "");
    RemoveMib(L"one.mib");
    EXPECT_EQ(ListMibFiles(), Names{L"two.mib"});
}

TEST_F(MibFolder, ListingNeedsNoLock) {
    WriteMib(L"one.mib", "");
    const std::lock_guard lock(MibStoreLock);
    EXPECT_EQ(ListMibFiles(), Names{L"one.mib"});
}

}  // namespace
