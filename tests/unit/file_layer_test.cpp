// What the program asks of its files, and under which locks. Files and folders are replaced by linking with
// ones in memory that look at the locks while they are inside, hence a program of its own: whether two
// threads ever meet in a file is no matter of luck then.
#include "platform/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "config/config_file.h"
#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/mib_folder.h"
#include "mib/mib_text.h"
#include "mib/name_store.h"
#include "platform/folders.h"
#include "tests/support/mib_tables.h"
#include "tests/support/stamps.h"

namespace {

struct File {
    std::string octets;
    uint64_t claimedSize = 0;  // what it says when it is asked, if that is more than it holds
};

// One call into the layer, and what was locked meanwhile.
struct Visit {
    std::wstring path;
    bool writes = false;
    bool underFileLock = false;
    bool underMibStoreLock = false;
};

std::map<std::wstring, File> files;
std::vector<std::wstring> madeFolders;
std::vector<Visit> visits;
std::wstring applicationData;

// Asked from another thread: the one that holds a lock may not try it.
bool IsHeld(std::mutex& lock) {
    bool held = true;
    std::thread([&] {
        const std::unique_lock attempt(lock, std::try_to_lock);
        held = !attempt.owns_lock();
    }).join();
    return held;
}

void Note(const std::wstring& path, bool writes) {
    visits.push_back({path, writes, IsHeld(FileLock), IsHeld(MibStoreLock)});
}

}  // namespace

bool AppendOctets(const std::wstring& path, std::string_view octets) {
    Note(path, true);
    files[path].octets.append(octets);
    return true;
}

bool ReplaceOctets(const std::wstring& path, std::string_view octets) {
    Note(path, true);
    files[path].octets = octets;
    return true;
}

bool ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets, uint64_t largestFile) {
    Note(path, false);
    octets.clear();
    const auto found = files.find(path);
    if (found == files.end() ||
        std::max<uint64_t>(found->second.octets.size(), found->second.claimedSize) > largestFile) {
        return false;
    }
    octets = found->second.octets.substr(static_cast<size_t>(offset));
    return true;
}

std::optional<uint64_t> QueryFileSize(const std::wstring& path) {
    const auto found = files.find(path);
    return found == files.end() ? std::nullopt : std::optional<uint64_t>(found->second.octets.size());
}

bool CopyFileOver(const std::wstring& source, const std::wstring& target) {
    files[target] = files[source];
    return true;
}

bool RemoveFile(const std::wstring& path) {
    files.erase(path);
    return true;
}

std::wstring QueryLocalAppDataFolder() {
    return applicationData;
}

bool PathExists(const std::wstring& path) {
    return files.count(path) != 0;
}

void CreateFolderWithParents(const std::wstring& path) {
    madeFolders.push_back(path);
}

bool EnumerateFolder(const std::wstring& path, const std::function<void(const FolderEntry&)>& visit) {
    const std::wstring prefix = path + L"\\";
    const std::map<std::wstring, File> now = files;
    for (const auto& [name, file] : now) {
        if (name.starts_with(prefix)) {
            visit({name.substr(prefix.size()), true});
        }
    }
    return true;
}

namespace {

class FileLayer : public testing::Test {
  protected:
    FileLayer() {
        files.clear();
        madeFolders.clear();
        applicationData = L"C:\\data";
        InitAppPaths();
        files[AppPaths.configPath].octets = "<forwardingPort>9162</forwardingPort>";
        visits.clear();
    }
    ~FileLayer() override { AppPaths = {}; }

    FreshNameStore store_;
};

struct Operation {
    const char* name;
    void (*run)();
};

const Operation kOperations[] = {
    {"AppendToFile", [] { AppendToFile(AppPaths.trapFilePath, L"a record"); }},
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
        visits.clear();
        operation.run();
        EXPECT_FALSE(visits.empty()) << operation.name;
        for (const Visit& visit : visits) {
            EXPECT_TRUE(visit.underFileLock) << operation.name;
        }
        EXPECT_FALSE(IsHeld(FileLock)) << operation.name;
    }
}

// So that nobody sees half a load: neither a trap that looks up a name, nor whoever reads the log and asks.
TEST_F(FileLayer, ALoadKeepsTheNameStoreUntilItsLogLineIsWritten) {
    files[AppPaths.mibsDir + L"\\a.mib"].octets = "a OBJECT IDENTIFIER ::= { mgmt 5 }\n";
    LoadMibFolder();
    ASSERT_EQ(visits.size(), 2U) << "the MIB file, then the log";
    EXPECT_EQ(visits[0].path, AppPaths.mibsDir + L"\\a.mib");
    EXPECT_EQ(visits[1].path, AppPaths.logFilePath);
    for (const Visit& visit : visits) {
        EXPECT_TRUE(visit.underMibStoreLock);
        EXPECT_EQ(visit.underFileLock, visit.writes) << "the lock of the data files is for these alone";
    }
    EXPECT_EQ(files[AppPaths.logFilePath].octets.substr(kStampLength),
              "  MIBs loaded. OID mappings: 1\r\r\n");
    EXPECT_FALSE(IsHeld(MibStoreLock));
}

TEST_F(FileLayer, AMibFileIsReadWhenItHoldsLessThanTwoGibibytes) {
    constexpr uint64_t kTwoGibibytes = uint64_t{1} << 31;
    File& file = files[L"large.mib"];
    file.octets = "text";
    for (const uint64_t size : {kTwoGibibytes - 1, kTwoGibibytes, kTwoGibibytes + 1, UINT64_MAX}) {
        file.claimedSize = size;
        EXPECT_EQ(std::get<std::string>(ReadMibText(L"large.mib")), size < kTwoGibibytes ? "text" : "")
            << size;
    }
}

TEST_F(FileLayer, WithoutAnApplicationDataFolderTheDataLieAtTheRootOfTheDrive) {
    files.clear();
    madeFolders.clear();
    applicationData.clear();
    InitAppPaths();
    EXPECT_EQ(AppPaths.dataDir, L"\\Quillmont");
    EXPECT_EQ(madeFolders, (std::vector<std::wstring>{L"\\Quillmont", L"\\Quillmont\\mibs"}));
    EXPECT_EQ(files.size(), 2U);
    EXPECT_EQ(files.count(L"\\Quillmont\\SNMP.txt"), 1U);
    EXPECT_EQ(files.count(L"\\Quillmont\\log.txt"), 1U);
}

}  // namespace
