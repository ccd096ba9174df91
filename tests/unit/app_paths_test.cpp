#include "core/app_paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/files.h"
#include "platform/folders.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr bool kSystemChoosesTheFolder = sizeof(wchar_t) == 2;

// Sets the application-data folder. Does nothing on Windows, where the system chooses the folder.
void PointApplicationDataTo([[maybe_unused]] const std::string& folder) {
#ifndef _WIN32
    setenv("QUILLMONT_DATA_HOME", folder.c_str(), 1);
#endif
}

// For the standard library: slashes work on every system.
std::filesystem::path ToStandardPath(std::wstring path) {
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}

// An account that has never run the program.
class AppPathsTest : public testing::Test {
  protected:
    void SetUp() override {
        PointApplicationDataTo((folder_.path() / "local").string());
        dataDir_ = QueryLocalAppDataFolder() + L"\\Quillmont";
        if (PathExists(dataDir_)) {
            GTEST_SKIP() << "This account has Quillmont data, which the test would delete.";
        }
        ours_ = true;
    }

    void TearDown() override {
        AppPaths = {};
        if (ours_) {
            std::error_code ignored;
            std::filesystem::remove_all(ToStandardPath(dataDir_), ignored);
        }
    }

    ScratchFolder folder_;
    std::wstring dataDir_;

  private:
    bool ours_ = false;
};

TEST_F(AppPathsTest, PathsAreInTheUsersLocalApplicationData) {
    InitAppPaths();
    EXPECT_EQ(AppPaths.dataDir, dataDir_);
    EXPECT_EQ(AppPaths.mibsDir, dataDir_ + L"\\mibs");
    EXPECT_EQ(AppPaths.configPath, dataDir_ + L"\\config.xml");
    EXPECT_EQ(AppPaths.trapFilePath, dataDir_ + L"\\SNMP.txt");
    EXPECT_EQ(AppPaths.logFilePath, dataDir_ + L"\\log.txt");
}

TEST_F(AppPathsTest, FirstStartCreatesFoldersAndEmptyFilesButNoSettings) {
    InitAppPaths();
    EXPECT_TRUE(PathExists(dataDir_));
    EXPECT_TRUE(EnumerateFolder(AppPaths.mibsDir, [](const FolderEntry&) { FAIL() << "not empty"; }));
    EXPECT_EQ(QueryFileSize(AppPaths.trapFilePath), 0U);
    EXPECT_EQ(QueryFileSize(AppPaths.logFilePath), 0U);
    EXPECT_FALSE(PathExists(AppPaths.configPath));
}

TEST_F(AppPathsTest, SecondStartLeavesExistingFilesUnchanged) {
    InitAppPaths();
    WriteOctets(AppPaths.trapFilePath, "a record\r\r\nand half of one");
    WriteOctets(AppPaths.logFilePath, "\x1A");
    WriteOctets(AppPaths.configPath, "settings");
    InitAppPaths();
    EXPECT_EQ(ReadOctets(AppPaths.trapFilePath), "a record\r\r\nand half of one");
    EXPECT_EQ(ReadOctets(AppPaths.logFilePath), "\x1A");
    EXPECT_EQ(ReadOctets(AppPaths.configPath), "settings");
}

TEST_F(AppPathsTest, DeletedMibsFolderIsRecreatedAtTheNextStart) {
    InitAppPaths();
    WriteOctets(AppPaths.logFilePath, "old");
    std::filesystem::remove(ToStandardPath(dataDir_ + L"\\mibs"));
    InitAppPaths();
    EXPECT_TRUE(PathExists(AppPaths.mibsDir));
    EXPECT_EQ(ReadOctets(AppPaths.logFilePath), "old");
}

TEST_F(AppPathsTest, NonAsciiCharactersAreUnchanged) {
    if constexpr (kSystemChoosesTheFolder) {
        GTEST_SKIP() << "The system chooses the folder; the desktop tests use one with such characters.";
    } else {
        PointApplicationDataTo(folder_.path().string() + "/J\xC3\xBCrgen \xD0\x96");
        InitAppPaths();
        EXPECT_EQ(AppPaths.dataDir, folder_.path().wstring() + L"/J\u00FCrgen \u0416\\Quillmont");
        EXPECT_TRUE(PathExists(folder_.path().wstring() + L"/J\u00FCrgen \u0416/Quillmont/mibs"));
        EXPECT_EQ(QueryFileSize(AppPaths.logFilePath), 0U);
    }
}

}  // namespace
