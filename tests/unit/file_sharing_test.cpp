// Files that another program has open: an editor, a log shipper, a backup. Built for Windows only, where a
// program can open a file without sharing it.
#include <gtest/gtest.h>

#include <string>

#include "platform/files.h"
#include "platform/windows/scoped_handle.h"
#include "platform/windows/windows_headers.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kShareAll = kShareReadWrite | FILE_SHARE_DELETE;

// How the other program has the file open, and whether it allows us to write.
struct OtherProgram {
    const char* name;
    DWORD access;
    DWORD share;
    bool letsUsWrite;
};

class FileSharing : public testing::TestWithParam<OtherProgram> {
  protected:
    FileSharing() {
        WriteOctets(file_, "one");
        other_.Reset(CreateFileW(file_.c_str(), GetParam().access, GetParam().share, nullptr, OPEN_EXISTING,
                                 0, nullptr));
        EXPECT_TRUE(other_);
    }

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.txt");
    ScopedHandle other_;
};

TEST_P(FileSharing, WritingWorksIfTheOtherProgramAllowsIt) {
    const bool letsUsWrite = GetParam().letsUsWrite;
    EXPECT_EQ(AppendOctets(file_, "two"), letsUsWrite);
    EXPECT_EQ(ReplaceOctets(file_, "three"), letsUsWrite);
    other_.Reset(nullptr);
    EXPECT_EQ(ReadOctets(file_), letsUsWrite ? "three" : "one");
    EXPECT_TRUE(AppendOctets(file_, "four"));
    EXPECT_EQ(ReadOctets(file_), letsUsWrite ? "threefour" : "onefour");
}

INSTANTIATE_TEST_SUITE_P(
    Each, FileSharing,
    testing::Values(OtherProgram{"Reader", GENERIC_READ, kShareAll, true},
                    OtherProgram{"Writer", GENERIC_WRITE, kShareAll, true},
                    OtherProgram{"Remover", DELETE, kShareAll, true},
                    OtherProgram{"ReaderAgainstRemoval", GENERIC_READ, kShareReadWrite, true},
                    OtherProgram{"ReaderAgainstWriters", GENERIC_READ, FILE_SHARE_READ, false},
                    OtherProgram{"ReaderThatSharesNothing", GENERIC_READ, 0, false}),
    [](const testing::TestParamInfo<OtherProgram>& other) { return std::string(other.param.name); });

}  // namespace
