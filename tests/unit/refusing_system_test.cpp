// Files, folders and threads when system calls fail, also in ways that Wine does not reproduce. The calls are
// replaced at link time; they call the real ones unless a test requests a failure.
#include <gtest/gtest.h>

#include <bit>
#include <future>
#include <memory>
#include <string>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/thread.h"
#include "platform/windows/scoped_handle.h"
#include "platform/windows/windows_headers.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr DWORD kHidden = FILE_ATTRIBUTE_HIDDEN;
constexpr DWORD kSystem = FILE_ATTRIBUTE_SYSTEM;
constexpr DWORD kReadOnly = FILE_ATTRIBUTE_READONLY;
constexpr DWORD kAllThree = kHidden | kSystem | kReadOnly;

// The failures that a test requests.
struct System {
    bool enforcesAttributes = false;  // of files, as Windows documents it
    DWORD maxTransfer = MAXDWORD;     // octets that one call reads or writes
    int transfers = 0;                // calls that read or write
    int transferThatFails = 0;        // 1: the first; 0: none
    int transferThatMovesNothing = 0;
    bool refusesToTruncate = false;
    bool claimsHugeFiles = false;  // of 4 GiB and 5 octets each
    int searches = 0;              // for the next entry of a folder
    int searchThatFails = 0;
    bool refusesThreads = false;
    bool waitsFail = false;
} fake;

template <typename Function>
Function RealFunction(const char* name) {
    return std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

BOOL Refuse(DWORD error) {
    SetLastError(error);
    return FALSE;
}

DWORD AttributesOf(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? attributes : attributes & kAllThree;
}

bool HasAttributes(LPCWSTR path, DWORD some) {
    const DWORD attributes = AttributesOf(path);
    return fake.enforcesAttributes && attributes != INVALID_FILE_ATTRIBUTES && (attributes & some) != 0;
}

BOOL WINAPI Copy(LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
    static const auto real = RealFunction<decltype(&CopyFileW)>("CopyFileW");
    if (HasAttributes(target, kAllThree)) {
        return Refuse(ERROR_ACCESS_DENIED);
    }
    return real(source, target, failIfExists) &&
           (!fake.enforcesAttributes || SetFileAttributesW(target, GetFileAttributesW(source)));
}

HANDLE WINAPI Open(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE pattern) {
    static const auto real = RealFunction<decltype(&CreateFileW)>("CreateFileW");
    if (disposition == CREATE_ALWAYS && HasAttributes(path, (kHidden | kSystem) & ~attributes)) {
        Refuse(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return real(path, access, share, security, disposition, attributes, pattern);
}

BOOL WINAPI Delete(LPCWSTR path) {
    static const auto real = RealFunction<decltype(&DeleteFileW)>("DeleteFileW");
    return HasAttributes(path, kReadOnly) ? Refuse(ERROR_ACCESS_DENIED) : real(path);
}

template <typename Buffer, typename Function>
BOOL Transfer(Function real, HANDLE file, Buffer buffer, DWORD size, DWORD* moved, OVERLAPPED* overlapped) {
    *moved = 0;
    ++fake.transfers;
    if (fake.transfers == fake.transferThatFails) {
        return Refuse(ERROR_DISK_OPERATION_FAILED);
    }
    return fake.transfers == fake.transferThatMovesNothing ||
           real(file, buffer, size < fake.maxTransfer ? size : fake.maxTransfer, moved, overlapped);
}

BOOL WINAPI Write(HANDLE file, LPCVOID octets, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    static const auto real = RealFunction<decltype(&WriteFile)>("WriteFile");
    return Transfer(real, file, octets, size, written, overlapped);
}

BOOL WINAPI Read(HANDLE file, LPVOID octets, DWORD size, LPDWORD got, LPOVERLAPPED overlapped) {
    static const auto real = RealFunction<decltype(&ReadFile)>("ReadFile");
    return Transfer(real, file, octets, size, got, overlapped);
}

BOOL WINAPI Truncate(HANDLE file) {
    static const auto real = RealFunction<decltype(&SetEndOfFile)>("SetEndOfFile");
    return fake.refusesToTruncate ? Refuse(ERROR_USER_MAPPED_FILE) : real(file);
}

BOOL WINAPI QueryAttributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID attributes) {
    static const auto real = RealFunction<decltype(&GetFileAttributesExW)>("GetFileAttributesExW");
    const BOOL known = real(path, level, attributes);
    if (known && fake.claimsHugeFiles) {
        auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(attributes);
        data->nFileSizeHigh = 1;
        data->nFileSizeLow = 5;
    }
    return known;
}

BOOL WINAPI FindNext(HANDLE search, LPWIN32_FIND_DATAW data) {
    static const auto real = RealFunction<decltype(&FindNextFileW)>("FindNextFileW");
    return ++fake.searches == fake.searchThatFails ? Refuse(ERROR_NETNAME_DELETED) : real(search, data);
}

HANDLE WINAPI MakeThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                         LPVOID parameter, DWORD flags, LPDWORD id) {
    static const auto real = RealFunction<decltype(&CreateThread)>("CreateThread");
    return fake.refusesThreads ? nullptr : real(security, stack, start, parameter, flags, id);
}

DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds) {
    static const auto real = RealFunction<decltype(&WaitForSingleObject)>("WaitForSingleObject");
    return fake.waitsFail ? WAIT_FAILED : real(handle, milliseconds);
}

}  // namespace

// Imported functions are called through these pointers; the linker prefers them to the import library's.
extern "C" {
decltype(&CopyFileW) __imp_CopyFileW = Copy;
decltype(&CreateFileW) __imp_CreateFileW = Open;
decltype(&DeleteFileW) __imp_DeleteFileW = Delete;
decltype(&WriteFile) __imp_WriteFile = Write;
decltype(&ReadFile) __imp_ReadFile = Read;
decltype(&SetEndOfFile) __imp_SetEndOfFile = Truncate;
decltype(&GetFileAttributesExW) __imp_GetFileAttributesExW = QueryAttributes;
decltype(&FindNextFileW) __imp_FindNextFileW = FindNext;
decltype(&CreateThread) __imp_CreateThread = MakeThread;
decltype(&WaitForSingleObject) __imp_WaitForSingleObject = Wait;
}

namespace {

// ---- Hidden, system and read-only files, which Wine overwrites and removes

class FileAttributes : public testing::TestWithParam<DWORD> {
  protected:
    void SetUp() override {
        fake = {};
        ASSERT_TRUE(ReplaceOctets(source_, "new"));
        ASSERT_TRUE(ReplaceOctets(target_, "old"));
        fake.enforcesAttributes = true;
    }

    // Otherwise the scratch folder could not be removed.
    void TearDown() override {
        fake = {};
        for (const std::wstring& path : {source_, target_}) {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        }
    }

    static void Set(const std::wstring& path, DWORD attributes) {
        ASSERT_TRUE(SetFileAttributesW(path.c_str(), attributes));
        ASSERT_EQ(AttributesOf(path), attributes) << "this file system does not store attributes";
    }

    ScratchFolder folder_;
    const std::wstring source_ = folder_.Join(L"source.mib");
    const std::wstring target_ = folder_.Join(L"target.mib");
};

TEST_P(FileAttributes, CopyingReplacesATargetAndClearsItsAttributes) {
    Set(target_, GetParam());
    EXPECT_TRUE(CopyFileOver(source_, target_));
    EXPECT_EQ(ReadOctets(target_), "new");
    EXPECT_EQ(AttributesOf(target_), 0U);
}

TEST_P(FileAttributes, ACopyHasNoAttributesAndItsSourceIsUnchanged) {
    Set(source_, GetParam());
    for (const char* time : {"first", "second"}) {
        EXPECT_TRUE(CopyFileOver(source_, target_)) << time;
        EXPECT_EQ(AttributesOf(target_), 0U) << time;
    }
    EXPECT_EQ(AttributesOf(source_), GetParam());
}

TEST_P(FileAttributes, AFailedCopyLeavesTheTargetUnchanged) {
    Set(target_, GetParam());
    EXPECT_FALSE(CopyFileOver(folder_.Join(L"missing.mib"), target_));
    EXPECT_EQ(ReadOctets(target_), "old");
    EXPECT_EQ(AttributesOf(target_), GetParam());
}

TEST_P(FileAttributes, AFileIsRemovedUnlessAnotherProgramHasItOpen) {
    Set(target_, GetParam());
    {
        const ScopedHandle other(
            CreateFileW(target_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(other);
        EXPECT_FALSE(RemoveFile(target_));
    }
    EXPECT_EQ(ReadOctets(target_), "old");
    EXPECT_EQ(AttributesOf(target_), GetParam());
    EXPECT_TRUE(RemoveFile(target_));
    EXPECT_FALSE(PathExists(target_));
}

TEST_P(FileAttributes, ReplacingAndAppendingPreserveAttributes) {
    const DWORD attributes = GetParam() & ~kReadOnly;
    Set(target_, attributes);
    EXPECT_TRUE(ReplaceOctets(target_, "a"));
    EXPECT_TRUE(AppendOctets(target_, "b"));
    EXPECT_EQ(ReadOctets(target_), "ab");
    EXPECT_EQ(AttributesOf(target_), attributes);
}

INSTANTIATE_TEST_SUITE_P(Files, FileAttributes, testing::Values(0, kHidden, kSystem, kReadOnly, kAllThree));

// ---- Disks, shares and threads that fail

class RefusingSystem : public testing::Test {
  protected:
    RefusingSystem() {
        fake = {};
        WriteOctets(file_, kText);
        fake.transfers = 0;
    }
    ~RefusingSystem() override { fake = {}; }

    static constexpr DWORD kPart = 7;
    const std::string kText = "a text of thirty-three characters";

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.bin");
};

TEST_F(RefusingSystem, AnAppendFailsOnlyWhenNothingWasWritten) {
    fake.maxTransfer = kPart;
    for (int System::*fault : {&System::transferThatFails, &System::transferThatMovesNothing}) {
        for (const int failing : {1, 3}) {
            fake.*fault = failing;
            fake.transfers = 0;
            EXPECT_EQ(AppendOctets(file_, kText), failing > 1);
            EXPECT_EQ(fake.transfers, failing) << "nothing is written after a failure";
        }
        fake.*fault = 0;
    }
    EXPECT_EQ(QueryFileSize(file_), kText.size() + 4 * kPart);
}

TEST_F(RefusingSystem, ReplacingSucceedsEvenIfAWriteFails) {
    fake.transferThatFails = 1;
    EXPECT_TRUE(ReplaceOctets(file_, "new"));
    EXPECT_EQ(ReadOctets(file_), "");
}

// As when another program has mapped it into memory.
TEST_F(RefusingSystem, AFileThatCannotBeEmptiedIsUnchanged) {
    fake.refusesToTruncate = true;
    EXPECT_FALSE(ReplaceOctets(file_, "new"));
    EXPECT_EQ(ReadOctets(file_), kText);
}

TEST_F(RefusingSystem, AFailedReadReturnsNoOctets) {
    fake.maxTransfer = kPart;
    fake.transferThatFails = 3;
    std::string octets = "leftover";
    EXPECT_FALSE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, "");
}

TEST_F(RefusingSystem, AFileThatShrinksDuringTheReadIsReadToItsEnd) {
    fake.maxTransfer = kPart;
    fake.transferThatMovesNothing = 3;
    std::string octets;
    EXPECT_TRUE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, kText.substr(0, size_t{2} * kPart));
}

TEST_F(RefusingSystem, SizesMayExceed32Bits) {
    fake.claimsHugeFiles = true;
    EXPECT_EQ(QueryFileSize(file_), 0x100000005U);
}

TEST_F(RefusingSystem, EnumeratingFailsIfTheSearchFails) {
    WriteOctets(folder_.Join(L"second.bin"), "");
    const auto search = [&] {
        fake.searches = 0;
        return EnumerateFolder(folder_.path().wstring(), [](const FolderEntry&) {});
    };
    ASSERT_TRUE(search());
    const int searches = fake.searches;
    ASSERT_GE(searches, 2);
    for (fake.searchThatFails = 1; fake.searchThatFails <= searches; ++fake.searchThatFails) {
        EXPECT_FALSE(search()) << fake.searchThatFails;
    }
}

TEST_F(RefusingSystem, StartingReturnsNullAndFreesTheBodyIfThreadsAreRefused) {
    const auto owned = std::make_shared<int>(0);
    fake.refusesThreads = true;
    EXPECT_FALSE(StartWorkerThread([owned] { ++*owned; }));
    EXPECT_EQ(*owned, 0);
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(RefusingSystem, WaitingForAThreadFailsOnTimeoutOrError) {
    constexpr uint32_t kLongWait = 60'000;
    std::promise<void> end;
    const WorkerThreadHandle worker = StartWorkerThread([&end] { end.get_future().wait(); });
    ASSERT_TRUE(worker);
    EXPECT_FALSE(WaitForWorkerThread(*worker, 1));
    end.set_value();
    EXPECT_TRUE(WaitForWorkerThread(*worker, kLongWait));
    fake.waitsFail = true;
    EXPECT_FALSE(WaitForWorkerThread(*worker, 1));
}

}  // namespace
