// A system that refuses, and the refusals of Windows that Wine does not have. Calls of the system are
// replaced by linking with ones that call the real ones unless a test sets a refusal.
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

// The system as one test wants it.
struct System {
    bool guardsAttributes = false;  // of files, as Windows documents it
    DWORD most = MAXDWORD;          // octets that it reads or writes at a call
    int transfers = 0;              // such calls
    int transferThatFails = 0;      // 1: the first; 0: none
    int transferThatMovesNothing = 0;
    bool refusesToCut = false;
    bool claimsFourGibibytes = false;  // for each file, and 5 octets
    int searches = 0;                  // for the next entry of a folder
    int searchThatFails = 0;
    bool refusesThreads = false;
    bool waitsFail = false;
} wanted;

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
    return wanted.guardsAttributes && attributes != INVALID_FILE_ATTRIBUTES && (attributes & some) != 0;
}

BOOL WINAPI Copy(LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
    static const auto real = RealFunction<decltype(&CopyFileW)>("CopyFileW");
    if (HasAttributes(target, kAllThree)) {
        return Refuse(ERROR_ACCESS_DENIED);
    }
    return real(source, target, failIfExists) &&
           (!wanted.guardsAttributes || SetFileAttributesW(target, GetFileAttributesW(source)));
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
    ++wanted.transfers;
    if (wanted.transfers == wanted.transferThatFails) {
        return Refuse(ERROR_DISK_OPERATION_FAILED);
    }
    return wanted.transfers == wanted.transferThatMovesNothing ||
           real(file, buffer, size < wanted.most ? size : wanted.most, moved, overlapped);
}

BOOL WINAPI Write(HANDLE file, LPCVOID octets, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    static const auto real = RealFunction<decltype(&WriteFile)>("WriteFile");
    return Transfer(real, file, octets, size, written, overlapped);
}

BOOL WINAPI Read(HANDLE file, LPVOID octets, DWORD size, LPDWORD got, LPOVERLAPPED overlapped) {
    static const auto real = RealFunction<decltype(&ReadFile)>("ReadFile");
    return Transfer(real, file, octets, size, got, overlapped);
}

BOOL WINAPI Cut(HANDLE file) {
    static const auto real = RealFunction<decltype(&SetEndOfFile)>("SetEndOfFile");
    return wanted.refusesToCut ? Refuse(ERROR_USER_MAPPED_FILE) : real(file);
}

BOOL WINAPI QueryAttributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID attributes) {
    static const auto real = RealFunction<decltype(&GetFileAttributesExW)>("GetFileAttributesExW");
    const BOOL known = real(path, level, attributes);
    if (known && wanted.claimsFourGibibytes) {
        auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(attributes);
        data->nFileSizeHigh = 1;
        data->nFileSizeLow = 5;
    }
    return known;
}

BOOL WINAPI FindNext(HANDLE search, LPWIN32_FIND_DATAW data) {
    static const auto real = RealFunction<decltype(&FindNextFileW)>("FindNextFileW");
    return ++wanted.searches == wanted.searchThatFails ? Refuse(ERROR_NETNAME_DELETED) : real(search, data);
}

HANDLE WINAPI MakeThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                         LPVOID parameter, DWORD flags, LPDWORD id) {
    static const auto real = RealFunction<decltype(&CreateThread)>("CreateThread");
    return wanted.refusesThreads ? nullptr : real(security, stack, start, parameter, flags, id);
}

DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds) {
    static const auto real = RealFunction<decltype(&WaitForSingleObject)>("WaitForSingleObject");
    return wanted.waitsFail ? WAIT_FAILED : real(handle, milliseconds);
}

}  // namespace

// The pointers through which imported functions are called; the linker uses these and not the import
// library's.
extern "C" {
decltype(&CopyFileW) __imp_CopyFileW = Copy;
decltype(&CreateFileW) __imp_CreateFileW = Open;
decltype(&DeleteFileW) __imp_DeleteFileW = Delete;
decltype(&WriteFile) __imp_WriteFile = Write;
decltype(&ReadFile) __imp_ReadFile = Read;
decltype(&SetEndOfFile) __imp_SetEndOfFile = Cut;
decltype(&GetFileAttributesExW) __imp_GetFileAttributesExW = QueryAttributes;
decltype(&FindNextFileW) __imp_FindNextFileW = FindNext;
decltype(&CreateThread) __imp_CreateThread = MakeThread;
decltype(&WaitForSingleObject) __imp_WaitForSingleObject = Wait;
}

namespace {

// ---- Files that are hidden, read-only or the system's own. Wine copies over them and removes them.

class FileAttributes : public testing::TestWithParam<DWORD> {
  protected:
    void SetUp() override {
        wanted = {};
        ASSERT_TRUE(ReplaceOctets(source_, "new"));
        ASSERT_TRUE(ReplaceOctets(target_, "old"));
        wanted.guardsAttributes = true;
    }

    // Otherwise the scratch folder could not be removed.
    void TearDown() override {
        wanted = {};
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

TEST_P(FileAttributes, ATargetIsReplacedAndOrdinaryAfterwards) {
    Set(target_, GetParam());
    EXPECT_TRUE(CopyFileOver(source_, target_));
    EXPECT_EQ(ReadOctets(target_), "new");
    EXPECT_EQ(AttributesOf(target_), 0U);
}

TEST_P(FileAttributes, ACopyIsOrdinaryAndItsSourceUnchanged) {
    Set(source_, GetParam());
    for (const char* time : {"first", "second"}) {
        EXPECT_TRUE(CopyFileOver(source_, target_)) << time;
        EXPECT_EQ(AttributesOf(target_), 0U) << time;
    }
    EXPECT_EQ(AttributesOf(source_), GetParam());
}

TEST_P(FileAttributes, AFailedCopyLeavesTheTargetAndItsAttributes) {
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

// Settings, trap file and log.
TEST_P(FileAttributes, AHiddenFileIsReplacedAppendedToAndStillHidden) {
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
        wanted = {};
        WriteOctets(file_, kText);
        wanted.transfers = 0;
    }
    ~RefusingSystem() override { wanted = {}; }

    static constexpr DWORD kPart = 7;
    const std::string kText = "a text of thirty-three characters";

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.bin");
};

TEST_F(RefusingSystem, AnAppendFailsOnlyWhenNothingWasWritten) {
    wanted.most = kPart;
    for (int System::*fault : {&System::transferThatFails, &System::transferThatMovesNothing}) {
        for (const int failing : {1, 3}) {
            wanted.*fault = failing;
            wanted.transfers = 0;
            EXPECT_EQ(AppendOctets(file_, kText), failing > 1);
            EXPECT_EQ(wanted.transfers, failing) << "the failed write is the last";
        }
        wanted.*fault = 0;
    }
    EXPECT_EQ(QueryFileSize(file_), kText.size() + 4 * kPart);
}

TEST_F(RefusingSystem, AReplacementOfWhichAWriteFailsSucceeds) {
    wanted.transferThatFails = 1;
    EXPECT_TRUE(ReplaceOctets(file_, "new"));
    EXPECT_EQ(ReadOctets(file_), "");
}

// As when another program has mapped it into memory.
TEST_F(RefusingSystem, AFileThatCannotBeEmptiedIsUnchanged) {
    wanted.refusesToCut = true;
    EXPECT_FALSE(ReplaceOctets(file_, "new"));
    EXPECT_EQ(ReadOctets(file_), kText);
}

TEST_F(RefusingSystem, AFailedReadReturnsNoOctets) {
    wanted.most = kPart;
    wanted.transferThatFails = 3;
    std::string octets = "leftover";
    EXPECT_FALSE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, "");
}

TEST_F(RefusingSystem, AFileThatShrinksDuringTheReadIsReadToItsEnd) {
    wanted.most = kPart;
    wanted.transferThatMovesNothing = 3;
    std::string octets;
    EXPECT_TRUE(ReadOctetsFrom(file_, 0, octets));
    EXPECT_EQ(octets, kText.substr(0, size_t{2} * kPart));
}

TEST_F(RefusingSystem, ASizeHasMoreThan32Bits) {
    wanted.claimsFourGibibytes = true;
    EXPECT_EQ(QueryFileSize(file_), 0x100000005U);
}

TEST_F(RefusingSystem, ASearchThatBreaksOffFails) {
    WriteOctets(folder_.Join(L"second.bin"), "");
    const auto search = [&] {
        wanted.searches = 0;
        return EnumerateFolder(folder_.path().wstring(), [](const FolderEntry&) {});
    };
    ASSERT_TRUE(search());
    const int all = wanted.searches;
    ASSERT_GE(all, 2);
    for (wanted.searchThatFails = 1; wanted.searchThatFails <= all; ++wanted.searchThatFails) {
        EXPECT_FALSE(search()) << wanted.searchThatFails;
    }
}

TEST_F(RefusingSystem, ARefusedThreadReturnsNullAndFreesItsBody) {
    const auto owned = std::make_shared<int>(0);
    wanted.refusesThreads = true;
    EXPECT_FALSE(StartWorkerThread([owned] { ++*owned; }));
    EXPECT_EQ(*owned, 0);
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(RefusingSystem, AThreadHasEndedOnlyIfTheWaitSucceeds) {
    constexpr uint32_t kLongWait = 60'000;
    std::promise<void> end;
    const WorkerThreadHandle worker = StartWorkerThread([&end] { end.get_future().wait(); });
    ASSERT_TRUE(worker);
    EXPECT_FALSE(WaitForWorkerThread(*worker, 1));
    end.set_value();
    EXPECT_TRUE(WaitForWorkerThread(*worker, kLongWait));
    wanted.waitsFail = true;
    EXPECT_FALSE(WaitForWorkerThread(*worker, 1));
}

}  // namespace
