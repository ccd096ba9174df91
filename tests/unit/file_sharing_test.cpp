// Files that another program has open: an editor, a log shipper, a backup. Built for Windows only, where a
// file that is opened without sharing keeps the others out.
#include <gtest/gtest.h>

#include <string>

#include "platform/files.h"
#include "platform/windows/scoped_handle.h"
#include "platform/windows/windows_headers.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// What the other program may do with the file.
class FileSharing : public testing::TestWithParam<DWORD> {
  protected:
    FileSharing() {
        WriteOctets(file_, "one");
        other_.Reset(CreateFileW(file_.c_str(), GetParam(), kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_NE(other_.get(), INVALID_HANDLE_VALUE);
    }

    ScratchFolder folder_;
    const std::wstring file_ = folder_.Join(L"file.txt");
    ScopedHandle other_;
};

TEST_P(FileSharing, AnotherProgramThatHasTheFileOpenIsNoHindrance) {
    EXPECT_TRUE(AppendOctets(file_, "two"));
    EXPECT_EQ(ReadOctets(file_), "onetwo");
    EXPECT_TRUE(ReplaceOctets(file_, "three"));
    EXPECT_EQ(ReadOctets(file_), "three");
}

INSTANTIATE_TEST_SUITE_P(Each, FileSharing, testing::Values(GENERIC_READ, GENERIC_WRITE, DELETE),
                         [](const testing::TestParamInfo<DWORD>& access) {
                             return access.param == DELETE         ? "ToRemoveIt"
                                    : access.param == GENERIC_READ ? "ToReadIt"
                                                                   : "ToWriteIt";
                         });

}  // namespace
