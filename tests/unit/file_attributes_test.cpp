// Files that are hidden, read-only or the system's own. Wine copies over them, makes them anew and removes
// them without a word, Windows refuses. So the three calls are replaced by linking with ones that refuse as
// Windows documents it, and this is a program of its own.
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/folders.h"
#include "platform/windows/scoped_handle.h"
#include "platform/windows/windows_headers.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr DWORD kHidden = FILE_ATTRIBUTE_HIDDEN;
constexpr DWORD kSystem = FILE_ATTRIBUTE_SYSTEM;
constexpr DWORD kReadOnly = FILE_ATTRIBUTE_READONLY;
constexpr DWORD kAllThree = kHidden | kSystem | kReadOnly;

DWORD AttributesOf(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? attributes : attributes & kAllThree;
}

void SetAttributes(const std::wstring& path, DWORD attributes) {
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), attributes));
    ASSERT_EQ(AttributesOf(path), attributes) << "this file system does not keep what it was told";
}

template <typename Function>
Function RealFunction(const char* name) {
    return std::bit_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

BOOL Refuse() {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI CopyAsWindowsDoes(LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
    const DWORD former = AttributesOf(target);
    if (former != INVALID_FILE_ATTRIBUTES && former != 0) {
        return Refuse();
    }
    static const auto real = RealFunction<decltype(&CopyFileW)>("CopyFileW");
    return real(source, target, failIfExists) && SetFileAttributesW(target, GetFileAttributesW(source));
}

HANDLE WINAPI OpenAsWindowsDoes(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                DWORD disposition, DWORD attributes, HANDLE pattern) {
    const DWORD former = AttributesOf(path);
    if (disposition == CREATE_ALWAYS && former != INVALID_FILE_ATTRIBUTES &&
        (former & (kHidden | kSystem) & ~attributes) != 0) {
        Refuse();
        return INVALID_HANDLE_VALUE;
    }
    static const auto real = RealFunction<decltype(&CreateFileW)>("CreateFileW");
    return real(path, access, share, security, disposition, attributes, pattern);
}

BOOL WINAPI DeleteAsWindowsDoes(LPCWSTR path) {
    const DWORD attributes = AttributesOf(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & kReadOnly) != 0) {
        return Refuse();
    }
    static const auto real = RealFunction<decltype(&DeleteFileW)>("DeleteFileW");
    return real(path);
}

}  // namespace

// What a call of an imported function goes through; the linker takes these before the import library's.
extern "C" {
decltype(&CopyFileW) __imp_CopyFileW = CopyAsWindowsDoes;
decltype(&CreateFileW) __imp_CreateFileW = OpenAsWindowsDoes;
decltype(&DeleteFileW) __imp_DeleteFileW = DeleteAsWindowsDoes;
}

namespace {

class FileAttributesTest : public testing::TestWithParam<DWORD> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(ReplaceOctets(source_, "new"));
        ASSERT_TRUE(ReplaceOctets(target_, "old"));
    }

    // What the scratch folder could not clear away otherwise.
    void TearDown() override {
        for (const std::wstring& path : {source_, target_}) {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        }
    }

    static std::string Read(const std::wstring& path) {
        std::string octets;
        EXPECT_TRUE(ReadOctetsFrom(path, 0, octets));
        return octets;
    }

    ScratchFolder folder_;
    const std::wstring source_ = folder_.Join(L"source.mib");
    const std::wstring target_ = folder_.Join(L"target.mib");
};

TEST_P(FileAttributesTest, ATargetOfAnyKindIsReplacedAndIsOrdinaryAfterwards) {
    SetAttributes(target_, GetParam());
    EXPECT_TRUE(CopyFileOver(source_, target_));
    EXPECT_EQ(Read(target_), "new");
    EXPECT_EQ(AttributesOf(target_), 0U);
}

TEST_P(FileAttributesTest, TheCopyOfAnyKindOfFileIsOrdinaryAndItsSourceStaysWhatItIs) {
    SetAttributes(source_, GetParam());
    for (const char* time : {"first", "second"}) {
        EXPECT_TRUE(CopyFileOver(source_, target_)) << time;
        EXPECT_EQ(AttributesOf(target_), 0U) << time;
    }
    EXPECT_EQ(AttributesOf(source_), GetParam());
}

TEST_P(FileAttributesTest, AFailedCopyLeavesTheTargetsAttributesToo) {
    SetAttributes(target_, GetParam());
    EXPECT_FALSE(CopyFileOver(folder_.Join(L"missing.mib"), target_));
    EXPECT_EQ(Read(target_), "old");
    EXPECT_EQ(AttributesOf(target_), GetParam());
}

TEST_P(FileAttributesTest, AFolderInTheWayKeepsItsAttributes) {
    const std::wstring folder = folder_.Join(L"folder.mib");
    CreateFolderWithParents(folder);
    SetAttributes(folder, GetParam() & ~kReadOnly);
    EXPECT_FALSE(CopyFileOver(source_, folder));
    EXPECT_FALSE(RemoveFile(folder));
    EXPECT_EQ(AttributesOf(folder), GetParam() & ~kReadOnly);
}

TEST_P(FileAttributesTest, AFileOfAnyKindIsRemoved) {
    SetAttributes(target_, GetParam());
    EXPECT_TRUE(RemoveFile(target_));
    EXPECT_FALSE(PathExists(target_));
}

// Settings, trap file and log.
TEST_P(FileAttributesTest, AHiddenFileIsReplacedAndAppendedToAndStaysHidden) {
    const DWORD attributes = GetParam() & ~kReadOnly;
    SetAttributes(target_, attributes);
    EXPECT_TRUE(ReplaceOctets(target_, "a"));
    EXPECT_TRUE(AppendOctets(target_, "b"));
    EXPECT_EQ(Read(target_), "ab");
    EXPECT_EQ(AttributesOf(target_), attributes);
}

TEST_P(FileAttributesTest, AFileThatSomebodyHoldsIsNotRemovedAndStaysWhatItIs) {
    SetAttributes(target_, GetParam());
    {
        const ScopedHandle held(
            CreateFileW(target_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        EXPECT_FALSE(RemoveFile(target_));
    }
    EXPECT_EQ(Read(target_), "old");
    EXPECT_EQ(AttributesOf(target_), GetParam());
}

std::string NameOf(const testing::TestParamInfo<DWORD>& info) {
    switch (info.param) {
        case 0:
            return "Ordinary";
        case kHidden:
            return "Hidden";
        case kSystem:
            return "System";
        case kReadOnly:
            return "ReadOnly";
        default:
            return "AllThree";
    }
}

INSTANTIATE_TEST_SUITE_P(Files, FileAttributesTest,
                         testing::Values(0, kHidden, kSystem, kReadOnly, kAllThree), NameOf);

}  // namespace
