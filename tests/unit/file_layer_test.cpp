// What the program asks of its files, and under which locks. Files and folders are replaced by linking with
// ones in memory that look at the locks while somebody is inside, hence a program of its own: whether two
// threads ever meet in a file is no matter of luck then.
#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "config/config_file.h"
#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/mib_folder.h"
#include "mib/mib_text.h"
#include "mib/name_store.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/mib_tables.h"
#include "tests/support/stamps.h"
#include "tests/support/watched_files.h"

namespace {

std::wstring applicationData;
std::vector<std::wstring> madeFolders;
std::vector<std::wstring> mibFiles;

}  // namespace

std::wstring QueryLocalAppDataFolder() {
    return applicationData;
}

bool PathExists(const std::wstring&) {
    return false;
}

void CreateFolderWithParents(const std::wstring& path) {
    madeFolders.push_back(path);
}

bool EnumerateFolder(const std::wstring&, const std::function<void(const FolderEntry&)>& visit) {
    for (const std::wstring& name : mibFiles) {
        visit({name, true});
    }
    return true;
}

namespace {

// One stay in a file, and what was locked meanwhile.
struct Stay {
    std::wstring path;
    bool underFileLock = false;
    bool underMibStoreLock = false;
};

// Asked from another thread: the one that holds a lock may not try it.
bool IsHeld(std::mutex& lock) {
    bool held = true;
    std::thread([&] {
        const std::unique_lock attempt(lock, std::try_to_lock);
        held = !attempt.owns_lock();
    }).join();
    return held;
}

class FileLayer : public testing::Test {
  protected:
    FileLayer() {
        Files.Reset();
        applicationData = L"C:\\data";
        InitAppPaths();
        madeFolders.clear();
        mibFiles.clear();
        AppendOctets(AppPaths.configPath, "<forwardingPort>9162</forwardingPort>");
        Files.onOpen = [this](const std::wstring& path) {
            stays_.push_back({path, IsHeld(FileLock), IsHeld(MibStoreLock)});
        };
    }
    ~FileLayer() override {
        Files.Reset();
        AppPaths = {};
    }

    std::vector<Stay> stays_;
    FreshNameStore store_;
};

struct Operation {
    const char* name;
    void (*run)();
};

const Operation kOperations[] = {
    {"AppendToFile", [] { AppendToFile(AppPaths.trapFilePath, L"a record"); }},
    {"AppendLinesToFile", [] { AppendLinesToFile(AppPaths.logFilePath, "lines\r\r\n"); }},
    {"ReplaceFileText", [] { ReplaceFileText(AppPaths.configPath, L"settings"); }},
    {"ClearFile", [] { ClearFile(AppPaths.logFilePath); }},
    {"ReadWholeFile", [] { ReadWholeFile(AppPaths.configPath); }},
    {"ReadFileFrom", [] { ReadFileFrom(AppPaths.trapFilePath, 0); }},
    {"LogMessage", [] { LogMessage(L"Something happened."); }},
    {"LoadConfig", LoadConfig},
    {"SaveConfig", SaveConfig},
    {"InitAppPaths", InitAppPaths},
};

// So that no viewer sees half a record and no record is lost to the clearing of the file.
TEST_F(FileLayer, NobodyIsInADataFileWithoutTheFileLockAndNobodyKeepsIt) {
    for (const Operation& operation : kOperations) {
        stays_.clear();
        operation.run();
        EXPECT_FALSE(stays_.empty()) << operation.name;
        for (const Stay& stay : stays_) {
            EXPECT_TRUE(stay.underFileLock) << operation.name;
        }
        EXPECT_FALSE(IsHeld(FileLock)) << operation.name;
    }
}

// So that nobody sees half a load: neither a trap that looks up a name, nor whoever reads the log and asks.
TEST_F(FileLayer, ALoadKeepsTheNameStoreUntilItsLogLineIsWritten) {
    mibFiles = {L"a.mib"};
    const std::wstring mib = AppPaths.mibsDir + L"\\a.mib";
    AppendOctets(mib, "a OBJECT IDENTIFIER ::= { mgmt 5 }\n");
    stays_.clear();
    LoadMibFolder();
    ASSERT_EQ(stays_.size(), 2U) << "the MIB file, then the log";
    EXPECT_EQ(stays_[0].path, mib);
    EXPECT_FALSE(stays_[0].underFileLock) << "no trap waits for a file that is none of the data files";
    EXPECT_EQ(stays_[1].path, AppPaths.logFilePath);
    EXPECT_TRUE(stays_[0].underMibStoreLock && stays_[1].underMibStoreLock);
    EXPECT_EQ(Files.ReadOctetsOf(AppPaths.logFilePath).substr(kStampLength),
              "  MIBs loaded. OID mappings: 1\r\r\n");
    EXPECT_FALSE(IsHeld(MibStoreLock));
}

TEST_F(FileLayer, AMibFileIsReadWhenItHoldsLessThanTwoGibibytes) {
    constexpr uint64_t kTwoGibibytes = uint64_t{1} << 31;
    AppendOctets(L"large.mib", "text");
    for (const uint64_t size : {kTwoGibibytes - 1, kTwoGibibytes, kTwoGibibytes + 1, UINT64_MAX}) {
        Files.ClaimSize(L"large.mib", size);
        EXPECT_EQ(std::get<std::string>(ReadMibText(L"large.mib")), size < kTwoGibibytes ? "text" : "")
            << size;
    }
}

TEST_F(FileLayer, WithoutAnApplicationDataFolderTheDataLieAtTheRootOfTheDrive) {
    applicationData.clear();
    InitAppPaths();
    EXPECT_EQ(AppPaths.dataDir, L"\\Quillmont");
    EXPECT_EQ(madeFolders, (std::vector<std::wstring>{L"\\Quillmont", L"\\Quillmont\\mibs"}));
    EXPECT_TRUE(Files.Has(L"\\Quillmont\\SNMP.txt"));
    EXPECT_TRUE(Files.Has(L"\\Quillmont\\log.txt"));
}

}  // namespace
