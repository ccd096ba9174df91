// Files on a system that moves fewer octets at a call than it was asked to, moves none, or refuses: its calls
// are replaced by linking, hence a program of its own. What is opened is also seen to be closed.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <set>
#include <string>

#include "platform/files.h"
#include "platform/windows/windows_headers.h"
#include "tests/support/scratch_folder.h"

namespace {

// The system as one test wants it, and what was seen of it.
struct System {
    DWORD most = MAXDWORD;         // octets that it moves at a call
    int calls = 0;                 // that moved octets or should have
    int callThatFails = 0;         // 1: the first; 0: none
    int callThatMovesNothing = 0;  // and says that it went well
    bool refusesToSeek = false;
    bool refusesToCut = false;
    bool refusesSize = false;
    bool saysFourGibibytes = false;  // of each file, and 5 octets
    bool isWatched = false;
    std::set<HANDLE> open;
    int strangeHandlesClosed = 0;
} wanted;

template <typename Function>
Function RealFunction(const char* name) {
    return std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

BOOL Refuse(DWORD error) {
    SetLastError(error);
    return FALSE;
}

template <typename Buffer, typename Function>
BOOL Move(Function real, HANDLE file, Buffer buffer, DWORD size, DWORD* moved) {
    ++wanted.calls;
    *moved = 0;
    if (wanted.calls == wanted.callThatFails) {
        return Refuse(ERROR_DISK_OPERATION_FAILED);
    }
    return wanted.calls == wanted.callThatMovesNothing ||
           real(file, buffer, std::min(size, wanted.most), moved, nullptr);
}

BOOL WINAPI WriteInParts(HANDLE file, LPCVOID octets, DWORD size, LPDWORD written, LPOVERLAPPED) {
    static const auto real = RealFunction<decltype(&WriteFile)>("WriteFile");
    return Move(real, file, octets, size, written);
}

BOOL WINAPI ReadInParts(HANDLE file, LPVOID octets, DWORD size, LPDWORD got, LPOVERLAPPED) {
    static const auto real = RealFunction<decltype(&ReadFile)>("ReadFile");
    return Move(real, file, octets, size, got);
}

BOOL WINAPI SeekOrRefuse(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method) {
    static const auto real = RealFunction<decltype(&SetFilePointerEx)>("SetFilePointerEx");
    return wanted.refusesToSeek ? Refuse(ERROR_SEEK) : real(file, distance, position, method);
}

BOOL WINAPI CutOrRefuse(HANDLE file) {
    static const auto real = RealFunction<decltype(&SetEndOfFile)>("SetEndOfFile");
    return wanted.refusesToCut ? Refuse(ERROR_USER_MAPPED_FILE) : real(file);
}

BOOL WINAPI TellSizeOrRefuse(HANDLE file, PLARGE_INTEGER size) {
    static const auto real = RealFunction<decltype(&GetFileSizeEx)>("GetFileSizeEx");
    return wanted.refusesSize ? Refuse(ERROR_GEN_FAILURE) : real(file, size);
}

BOOL WINAPI TellAttributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID attributes) {
    static const auto real = RealFunction<decltype(&GetFileAttributesExW)>("GetFileAttributesExW");
    const BOOL known = real(path, level, attributes);
    if (known && wanted.saysFourGibibytes) {
        auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(attributes);
        data->nFileSizeHigh = 1;
        data->nFileSizeLow = 5;
    }
    return known;
}

HANDLE WINAPI SeeOpening(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD attributes, HANDLE pattern) {
    static const auto real = RealFunction<decltype(&CreateFileW)>("CreateFileW");
    const HANDLE file = real(path, access, share, security, disposition, attributes, pattern);
    if (wanted.isWatched && file != INVALID_HANDLE_VALUE) {
        wanted.open.insert(file);
    }
    return file;
}

BOOL WINAPI SeeClosing(HANDLE handle) {
    if (wanted.isWatched && wanted.open.erase(handle) == 0) {
        ++wanted.strangeHandlesClosed;
    }
    static const auto real = RealFunction<decltype(&CloseHandle)>("CloseHandle");
    return real(handle);
}

}  // namespace

// What a call of an imported function goes through; the linker takes these before the import library's.
extern "C" {
decltype(&WriteFile) __imp_WriteFile = WriteInParts;
decltype(&ReadFile) __imp_ReadFile = ReadInParts;
decltype(&SetFilePointerEx) __imp_SetFilePointerEx = SeekOrRefuse;
decltype(&SetEndOfFile) __imp_SetEndOfFile = CutOrRefuse;
decltype(&GetFileSizeEx) __imp_GetFileSizeEx = TellSizeOrRefuse;
decltype(&GetFileAttributesExW) __imp_GetFileAttributesExW = TellAttributes;
decltype(&CreateFileW) __imp_CreateFileW = SeeOpening;
decltype(&CloseHandle) __imp_CloseHandle = SeeClosing;
}

namespace {

constexpr DWORD kPart = 7;
const std::string kText = "a text of thirty-three characters";
constexpr int kParts = 5;

std::string TextOfParts(int count) {
    return kText.substr(0, static_cast<size_t>(count) * kPart);
}

class FileTransfers : public testing::Test {
  protected:
    FileTransfers() {
        WriteOctets(existing_, kText);
        wanted = {};
        wanted.isWatched = true;
    }
    ~FileTransfers() override {
        EXPECT_TRUE(wanted.open.empty()) << "a file was left open";
        EXPECT_EQ(wanted.strangeHandlesClosed, 0);
        wanted = {};
    }

    // Whether it could be read; what came of it is in octets_.
    bool Read(uint64_t offset) {
        octets_ = "leftover";
        return ReadOctetsFrom(existing_, offset, octets_);
    }

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.bin");
    const std::wstring existing_ = folder_.Join(L"existing.bin");
    std::string octets_;
};

TEST_F(FileTransfers, WhatOneCallDoesNotWriteTheNextOneDoes) {
    wanted.most = kPart;
    EXPECT_TRUE(AppendOctets(file_, kText));
    EXPECT_EQ(ReadOctets(file_), kText);
    EXPECT_TRUE(ReplaceOctets(existing_, kText + kText));
    EXPECT_EQ(ReadOctets(existing_), kText + kText);
}

TEST_F(FileTransfers, AWriteThatFailsOrWritesNothingIsTheLast) {
    wanted.most = kPart;
    for (int* call : {&wanted.callThatFails, &wanted.callThatMovesNothing}) {
        for (int last = 1; last <= kParts; ++last) {
            EXPECT_TRUE(RemoveFile(file_));
            wanted.calls = 0;
            *call = last;
            EXPECT_FALSE(AppendOctets(file_, kText)) << last;
            EXPECT_EQ(wanted.calls, last);
            EXPECT_EQ(ReadOctets(file_), TextOfParts(last - 1));
        }
        *call = 0;
    }
}

TEST_F(FileTransfers, AReplacementThatBreaksOffCountsAsMade) {
    wanted.callThatFails = 1;
    EXPECT_TRUE(ReplaceOctets(existing_, "new"));
    EXPECT_EQ(ReadOctets(existing_), "");
}

// Another program has it mapped into its memory.
TEST_F(FileTransfers, AFileThatCannotBeEmptiedIsUnchanged) {
    wanted.refusesToCut = true;
    EXPECT_FALSE(ReplaceOctets(existing_, "new"));
    EXPECT_EQ(wanted.calls, 0);
    wanted.refusesToCut = false;
    EXPECT_EQ(ReadOctets(existing_), kText);
}

TEST_F(FileTransfers, WhatOneCallDoesNotReadTheNextOneDoes) {
    wanted.most = kPart;
    EXPECT_TRUE(Read(0));
    EXPECT_EQ(octets_, kText);
    EXPECT_EQ(wanted.calls, kParts);
    EXPECT_TRUE(Read(kPart));
    EXPECT_EQ(octets_, kText.substr(kPart));
    EXPECT_EQ(wanted.calls, kParts + kParts - 1);
}

TEST_F(FileTransfers, AReadThatFailsGivesNothing) {
    wanted.most = kPart;
    for (int last = 1; last <= kParts; ++last) {
        wanted.calls = 0;
        wanted.callThatFails = last;
        EXPECT_FALSE(Read(0)) << last;
        EXPECT_EQ(octets_, "") << last;
        EXPECT_EQ(wanted.calls, last);
    }
}

TEST_F(FileTransfers, AFileThatBecomesShorterMeanwhileIsReadToItsEnd) {
    wanted.most = kPart;
    for (int last = 1; last <= kParts; ++last) {
        wanted.calls = 0;
        wanted.callThatMovesNothing = last;
        EXPECT_TRUE(Read(0)) << last;
        EXPECT_EQ(octets_, TextOfParts(last - 1));
        EXPECT_EQ(wanted.calls, last);
    }
}

TEST_F(FileTransfers, AFileWhosePlaceOrSizeIsNotToBeHadIsNotRead) {
    for (bool* refusal : {&wanted.refusesToSeek, &wanted.refusesSize}) {
        *refusal = true;
        EXPECT_FALSE(Read(0));
        EXPECT_EQ(octets_, "");
        EXPECT_EQ(wanted.calls, 0);
        *refusal = false;
    }
}

TEST_F(FileTransfers, ASizeHasMoreThan32Bits) {
    wanted.saysFourGibibytes = true;
    EXPECT_EQ(QueryFileSize(existing_), 0x100000005U);
}

}  // namespace
