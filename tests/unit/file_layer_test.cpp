// What the program asks of its files, and under which locks. Files and folders are replaced by linking with
// ones in memory that look at the locks while somebody is inside, hence a program of its own: whether two
// threads ever meet in a file is no matter of luck then.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
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
    {"AppendAllToFile",
     [] {
         const std::vector<std::wstring> lines = {L"one", L"two"};
         AppendAllToFile(AppPaths.logFilePath, lines);
     }},
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

constexpr size_t kMebibyte = size_t{1} << 20;

// So that traps are recorded while a viewer opens on a large file.
TEST_F(FileLayer, AppendsGetInBetweenThePiecesOfALargeRead) {
    AppendOctets(AppPaths.logFilePath, std::string(20 * kMebibyte, 'x'));
    std::vector<std::wstring> opened;  // guarded by FileLock, under which each file is opened
    Files.onOpen = [&](const std::wstring& path) { opened.push_back(path); };
    std::atomic<bool> done{false};
    std::thread appender([&] {
        while (!done) {
            AppendToFile(AppPaths.trapFilePath, L"a record");
        }
    });
    bool between = false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!between && std::chrono::steady_clock::now() < deadline) {
        ReadWholeFile(AppPaths.logFilePath);
        const std::lock_guard lock(FileLock);
        const auto first = std::find(opened.begin(), opened.end(), AppPaths.logFilePath);
        const auto last = std::find(opened.rbegin(), opened.rend(), AppPaths.logFilePath).base();
        between = std::find(first, last, AppPaths.trapFilePath) != last;
        opened.clear();
    }
    done = true;
    appender.join();
    EXPECT_TRUE(between);
}

struct Interference {
    const char* name;
    void (*change)(const std::wstring& path);
    size_t oldOctets;  // how many octets of the file as it was opened are in the result
    size_t newOctets;  // how many octets of the other file follow
};

constexpr size_t kThreePieces = 2 * kMebibyte + 100;

// Of a file of three pieces; the change is made before the second one is opened.
const Interference kInterferences[] = {
    {"grows", [](const std::wstring& path) { AppendOctets(path, "more"); }, kThreePieces, 0},
    {"is cleared", [](const std::wstring& path) { ReplaceOctets(path, ""); }, kMebibyte, 0},
    {"is removed", [](const std::wstring& path) { RemoveFile(path); }, kMebibyte, 0},
    {"is replaced by a shorter one",
     [](const std::wstring& path) { ReplaceOctets(path, std::string(kThreePieces - 1, 'n')); }, kMebibyte, 0},
    {"is replaced by a longer one",
     [](const std::wstring& path) { ReplaceOctets(path, std::string(kThreePieces + 1, 'n')); }, kMebibyte,
     kThreePieces - kMebibyte},
};

TEST_F(FileLayer, AFileThatChangesBetweenTwoPiecesIsReadUpToTheSizeThatItHadOrToTheChange) {
    const std::wstring path = L"file.txt";
    for (const Interference& interference : kInterferences) {
        Files.onOpen = nullptr;
        ReplaceOctets(path, std::string(kThreePieces, 'o'));
        int openings = 0;
        Files.onOpen = [&](const std::wstring&) {
            if (++openings == 2) {
                interference.change(path);
            }
        };
        const std::wstring text = ReadFileFrom(path, 0);
        EXPECT_TRUE(text ==
                    std::wstring(interference.oldOctets, L'o') + std::wstring(interference.newOctets, L'n'))
            << interference.name << ": " << text.size();
    }
}

TEST_F(FileLayer, APieceThatEndsInsideACharacterOrALineEndIsNoBoundary) {
    std::string octets(kMebibyte - 1, 'x');
    octets += "\xC3\xA9";
    octets.resize(2 * kMebibyte - 1, 'x');
    octets += "\r\n";
    ReplaceOctets(L"file.txt", octets);
    const std::wstring later = ReadFileFrom(L"file.txt", 0);
    EXPECT_EQ(later.substr(kMebibyte - 2, 3), L"x\u00E9x");
    EXPECT_EQ(later.size(), octets.size() - 1);
    const std::wstring whole = ReadWholeFile(L"file.txt");
    EXPECT_TRUE(whole.ends_with(L"xx\n"));
    EXPECT_EQ(whole.size(), octets.size() - 1);
    EXPECT_EQ(ReadFileFrom(L"file.txt", kMebibyte + 1).size(), kMebibyte);
}

TEST_F(FileLayer, AMibFileIsReadWhenItHoldsLessThanTwoGibibytes) {
    constexpr uint64_t kTwoGibibytes = uint64_t{1} << 31;
    AppendOctets(L"large.mib", "text");
    for (const uint64_t size : {kTwoGibibytes - 1, kTwoGibibytes, kTwoGibibytes + 1, UINT64_MAX}) {
        Files.ClaimSize(L"large.mib", size);
        EXPECT_EQ(ReadMibText(L"large.mib"), size < kTwoGibibytes ? L"text" : L"") << size;
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
