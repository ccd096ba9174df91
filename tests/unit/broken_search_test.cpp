// A search through a folder that the system breaks off: its own call for the next entry is replaced by
// linking with one that fails on demand, hence a program of its own.
#include <gtest/gtest.h>

#include <string>

#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/scratch_folder.h"

namespace {

int calls = 0;          // for the next entry, since the start of the search
int callThatFails = 0;  // 1: the first; 0: none
int closings = 0;       // of a search, since its start

bool FailsNow() {
    return ++calls == callThatFails;
}

}  // namespace

#ifdef _WIN32

#include <bit>

#include "platform/windows/windows_headers.h"

static BOOL WINAPI FindNextOrFail(HANDLE search, LPWIN32_FIND_DATAW data) {
    if (FailsNow()) {
        SetLastError(ERROR_NETNAME_DELETED);  // the share went away
        return FALSE;
    }
    static const auto real = std::bit_cast<decltype(&FindNextFileW)>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "FindNextFileW"));
    return real(search, data);
}

static BOOL WINAPI SeeFindClose(HANDLE search) {
    ++closings;
    static const auto real =
        std::bit_cast<decltype(&FindClose)>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "FindClose"));
    return real(search);
}

// What a call of an imported function goes through; the linker takes these before the import library's.
extern "C" {
decltype(&FindNextFileW) __imp_FindNextFileW = FindNextOrFail;
decltype(&FindClose) __imp_FindClose = SeeFindClose;
}

#else

#include <dirent.h>
#include <dlfcn.h>

#include <cerrno>

extern "C" dirent* readdir(DIR* folder) {
    if (FailsNow()) {
        errno = EIO;
        return nullptr;
    }
    static const auto real = reinterpret_cast<decltype(&readdir)>(dlsym(RTLD_NEXT, "readdir"));
    return real(folder);
}

extern "C" int closedir(DIR* folder) {
    ++closings;
    static const auto real = reinterpret_cast<int (*)(DIR*)>(dlsym(RTLD_NEXT, "closedir"));
    return real(folder);
}

#endif

namespace {

class BrokenSearch : public testing::Test {
  protected:
    BrokenSearch() {
        for (const wchar_t* name : {L"a.mib", L"b.mib", L"c.mib"}) {
            AppendOctets(folder_.Join(name), "x");
        }
    }
    ~BrokenSearch() override { callThatFails = 0; }

    // Visits the folder; true: to its end. Either way the search is closed.
    bool Search() {
        calls = 0;
        closings = 0;
        visited_ = 0;
        const bool whole = EnumerateFolder(folder_.path().wstring(), [&](const FolderEntry&) { ++visited_; });
        EXPECT_EQ(closings, 1);
        return whole;
    }

    ScratchFolder folder_;
    int visited_ = 0;
};

TEST_F(BrokenSearch, IsNotTakenForAWholeOneWhereverItBreaksOffAndHasVisitedWhatItSaw) {
    ASSERT_TRUE(Search());
    ASSERT_EQ(visited_, 3);
    const int allCalls = calls;
    ASSERT_GE(allCalls, 3);
    int before = 0;
    for (callThatFails = 1; callThatFails <= allCalls; ++callThatFails) {
        EXPECT_FALSE(Search()) << callThatFails;
        EXPECT_GE(visited_, before) << callThatFails;
        before = visited_;
    }
    EXPECT_EQ(before, 3) << "the last call only learns that there are no more";
}

TEST_F(BrokenSearch, OneThatCannotBeginHasNothingToClose) {
    closings = 0;
    EXPECT_FALSE(EnumerateFolder(folder_.Join(L"missing"), [](const FolderEntry&) { FAIL(); }));
    EXPECT_EQ(closings, 0);
}

}  // namespace
