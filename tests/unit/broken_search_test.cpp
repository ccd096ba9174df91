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

// What a call of an imported function goes through; the linker takes it before the import library's.
extern "C" {
decltype(&FindNextFileW) __imp_FindNextFileW = FindNextOrFail;
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

    // Visits the folder; true: to its end.
    bool Search() {
        calls = 0;
        visited_ = 0;
        return EnumerateFolder(folder_.path().wstring(), [&](const FolderEntry&) { ++visited_; });
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

}  // namespace
