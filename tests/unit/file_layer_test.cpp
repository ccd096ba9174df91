// How the program uses its files, and under which locks. Files and folders are replaced at link time with
// ones in memory, where each use checks the locks: a missing lock fails the test every time.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <stdexcept>
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
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/mib_tables.h"
#include "tests/support/stamps.h"
#include "tests/support/watched_files.h"

namespace {

enum class Enumeration { Complete, Failed, Thrown };

std::wstring applicationData;
std::vector<std::wstring> createdFolders;
std::vector<std::wstring> mibFiles;
Enumeration enumeration = Enumeration::Complete;

}  // namespace

std::wstring QueryLocalAppDataFolder() {
    return applicationData;
}

bool PathExists(const std::wstring&) {
    return false;
}

void CreateFolderWithParents(const std::wstring& path) {
    createdFolders.push_back(path);
}

bool EnumerateFolder(const std::wstring&, const std::function<void(const FolderEntry&)>& visit) {
    for (const std::wstring& name : mibFiles) {
        visit({name, true});
    }
    if (enumeration == Enumeration::Thrown) {
        throw std::runtime_error("the enumeration failed");
    }
    return enumeration == Enumeration::Complete;
}

namespace {

// One use of a file, and the locks held during it.
struct FileUse {
    std::wstring path;
    bool underFileLock = false;
    bool underMibStoreLock = false;
};

// Tried on another thread: a thread must not try a lock that it holds.
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
        createdFolders.clear();
        mibFiles.clear();
        enumeration = Enumeration::Complete;
        AppendOctets(AppPaths.configPath, "<forwardingPort>9162</forwardingPort>");
        Files.onOpen = [this](const std::wstring& path) {
            uses_.push_back({path, IsHeld(FileLock), IsHeld(MibStoreLock)});
        };
    }
    ~FileLayer() override {
        Files.Reset();
        AppPaths = {};
    }

    static void AddMibFile(const std::wstring& name, const char* octets) {
        AppendOctets(AppPaths.mibsDir + L"\\" + name, octets);
        mibFiles.push_back(name);
    }

    std::vector<FileUse> uses_;
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

// Otherwise a viewer could show half a record, or clearing a file could lose one.
TEST_F(FileLayer, EveryUseOfADataFileIsUnderTheFileLock) {
    for (const Operation& operation : kOperations) {
        uses_.clear();
        operation.run();
        EXPECT_FALSE(uses_.empty()) << operation.name;
        for (const FileUse& use : uses_) {
            EXPECT_TRUE(use.underFileLock) << operation.name;
        }
        EXPECT_FALSE(IsHeld(FileLock)) << operation.name;
    }
}

// Otherwise a trap that looks up a name could see a partial load.
TEST_F(FileLayer, ALoadLocksTheNameStoreUntilItsLogLineIsWritten) {
    AddMibFile(L"a.mib", "a OBJECT IDENTIFIER ::= { mgmt 5 }\n");
    uses_.clear();
    LoadMibFolder();
    ASSERT_EQ(uses_.size(), 2U) << "the MIB file, then the log";
    EXPECT_EQ(uses_[0].path, AppPaths.mibsDir + L"\\a.mib");
    EXPECT_FALSE(uses_[0].underFileLock) << "traps must not wait for a MIB file";
    EXPECT_EQ(uses_[1].path, AppPaths.logFilePath);
    EXPECT_TRUE(uses_[0].underMibStoreLock && uses_[1].underMibStoreLock);
    EXPECT_EQ(Files.ReadOctetsOf(AppPaths.logFilePath).substr(kStampLength),
              "  MIBs loaded. OID mappings: 1\r\r\n");
    EXPECT_FALSE(IsHeld(MibStoreLock));
}

TEST_F(FileLayer, AfterAFailedEnumerationIdentifiersReadInFullAreNamedAndTheCountIsLogged) {
    AddMibFile(L"b.mib", "deferred OBJECT IDENTIFIER ::= { mgmt 5 }\n");
    AddMibFile(L"no.doc", "");
    AddMibFile(L"a.mib", "direct OBJECT IDENTIFIER ::= {\n iso org(3) x(9) -1 }\n");
    for (const Enumeration end : {Enumeration::Failed, Enumeration::Thrown}) {
        enumeration = Enumeration::Complete;
        LoadMibFolder();
        EXPECT_EQ(CountOidNames(), 2) << "the lock is free and the next load is complete";
        ReplaceOctets(AppPaths.logFilePath, "");
        enumeration = end;
        LoadMibFolder();
        EXPECT_EQ(NameOf(L"1.3.9"), L"direct");
        EXPECT_EQ(NameOf(L"1.3.6.1.2.5"), L"") << "nothing is resolved";
        EXPECT_EQ(CountDefinitions(), 1U);
        EXPECT_EQ(Files.ReadOctetsOf(AppPaths.logFilePath).substr(kStampLength),
                  "  MIBs loaded. OID mappings: 1\r\r\n");
        EXPECT_EQ(ListMibFiles(), (std::vector<std::wstring>{L"a.mib", L"b.mib"}));
    }
}

constexpr size_t kMebibyte = size_t{1} << 20;

// Traps must be recorded while a viewer opens a large file.
TEST_F(FileLayer, AppendsHappenBetweenThePiecesOfALargeRead) {
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
    size_t oldOctets;  // of the original file in the result
    size_t newOctets;  // of the other file after these
};

constexpr size_t kThreePieces = 2 * kMebibyte + 100;

// A file of three pieces changes before the second one is read.
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

TEST_F(FileLayer, AFileThatChangesBetweenPiecesIsReadUpToItsOldSizeOrTheChange) {
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

TEST_F(FileLayer, PiecesMayEndInsideACharacterOrALineEnd) {
    std::string octets(kMebibyte - 1, 'x');
    octets += "\xC3\xA9";
    octets.resize(2 * kMebibyte - 1, 'x');
    octets += "\r\n";
    ReplaceOctets(L"file.txt", octets);
    const std::wstring text = ReadFileFrom(L"file.txt", 0);
    EXPECT_EQ(text.substr(kMebibyte - 2, 3), L"x\u00E9x");
    EXPECT_EQ(text.size(), octets.size() - 1);
    EXPECT_TRUE(ReadWholeFile(L"file.txt").ends_with(L"xx\n"));
    EXPECT_EQ(ReadFileFrom(L"file.txt", kMebibyte + 1).size(), kMebibyte);
}

TEST_F(FileLayer, AMibFileIsReadIfSmallerThanTwoGibibytes) {
    constexpr uint64_t kTwoGibibytes = uint64_t{1} << 31;
    AppendOctets(L"large.mib", "text");
    for (const uint64_t size : {kTwoGibibytes - 1, kTwoGibibytes, kTwoGibibytes + 1, UINT64_MAX}) {
        Files.ClaimSize(L"large.mib", size);
        EXPECT_EQ(ReadMibText(L"large.mib"), size < kTwoGibibytes ? L"text" : L"") << size;
    }
}

// For example a symbolic link, which the folder lists with size 0.
TEST_F(FileLayer, AMibFileThatIsLargerThanListedIsNotRead) {
    AppendOctets(L"large.mib", "text");
    Files.ClaimSize(L"large.mib", 0);
    EXPECT_EQ(ReadMibText(L"large.mib"), L"text");
    Files.ClaimOpenSize(L"large.mib", uint64_t{1} << 31);
    EXPECT_EQ(ReadMibText(L"large.mib"), L"");
}

TEST_F(FileLayer, WithoutAnApplicationDataFolderTheDataAreAtTheRootOfTheDrive) {
    applicationData.clear();
    InitAppPaths();
    EXPECT_EQ(AppPaths.dataDir, L"\\Quillmont");
    EXPECT_EQ(createdFolders, (std::vector<std::wstring>{L"\\Quillmont", L"\\Quillmont\\mibs"}));
    EXPECT_TRUE(Files.Has(L"\\Quillmont\\SNMP.txt"));
    EXPECT_TRUE(Files.Has(L"\\Quillmont\\log.txt"));
}

}  // namespace
