// Data files that cannot be opened. The receiver runs without reporting it (there is no other log) and does
// not change what is in their place. Permissions, links and full disks are in posix_fault_test.cpp.
#include <filesystem>
#include <string>

#include "config/config_file.h"
#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/mib_folder.h"
#include "mib/name_store.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/engine/engine_fixture.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

namespace fs = std::filesystem;

class Faults : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        // When no file can be written, forwarding shows that a trap was handled.
        ReplaceForwarding(true, L"127.0.0.1", target_.port());
    }

    void ExpectTrapsAreStillHandled() {
        const Octets& trap = Sample("v2_link_down");
        client_.Send(trap);
        EXPECT_EQ(target_.Receive(), trap);
        EXPECT_NE(ServerState.lastTrapTick, 0U);
    }

    static void RemoveDataFolder() { fs::remove_all(StandardPath(AppPaths.dataDir)); }

    LoopbackClient client_;
    LoopbackClient target_;
};

TEST_F(Faults, WithoutADataFolderTheReceiverRunsAndCreatesNone) {
    RemoveDataFolder();
    LoadConfig();
    LoadMibFolder();
    ASSERT_TRUE(StartServer());
    ExpectTrapsAreStillHandled();
    SaveConfig();
    StopServer();
    EXPECT_FALSE(ServerState.running);
    EXPECT_FALSE(PathExists(AppPaths.dataDir));
}

TEST_F(Faults, ADataFolderRemovedWhileRunningLosesRecordsUntilItExistsAgain) {
    ASSERT_TRUE(StartServer());
    // Otherwise a worker may write its start line while the folder is being removed.
    ASSERT_TRUE(WaitForLogLines("Trap thread started (UDP 162)."));
    ASSERT_TRUE(WaitForLogLines("Listener thread started (UDP 161)."));
    RemoveDataFolder();
    ExpectTrapsAreStillHandled();
    EXPECT_FALSE(PathExists(AppPaths.dataDir));
    fs::create_directory(StandardPath(AppPaths.dataDir));
    client_.Send(Sample("v1_link_down"));
    ASSERT_TRUE(WaitForTraps(1));
    ASSERT_EQ(TrapRecords().size(), 1U);
    std::string expected = "       FROM: 127.0.0.1\r\r\n";
    expected += ExpectedLines("v1_link_down");
    EXPECT_EQ(TrapRecords()[0], expected);
}

TEST_F(Faults, AFolderInPlaceOfTheTrapFileLosesOnlyTheRecords) {
    fs::create_directory(StandardPath(AppPaths.trapFilePath));
    ASSERT_TRUE(StartServer());
    ExpectTrapsAreStillHandled();
    EXPECT_TRUE(WaitForTraps(1)) << "the trap was not logged";
    EXPECT_EQ(ReadWholeFile(AppPaths.trapFilePath), L"");
    EXPECT_EQ(ReadFileFrom(AppPaths.trapFilePath, 0), L"");
    ClearFile(AppPaths.trapFilePath);
    EXPECT_TRUE(fs::is_empty(StandardPath(AppPaths.trapFilePath))) << "the folder was changed";
}

TEST_F(Faults, AFolderInPlaceOfTheLogLosesOnlyTheLines) {
    RemoveFile(AppPaths.logFilePath);
    fs::create_directory(StandardPath(AppPaths.logFilePath));
    ASSERT_TRUE(StartServer());
    ExpectTrapsAreStillHandled();
    StopServer();
    EXPECT_EQ(TrapRecords().size(), 1U);
    EXPECT_TRUE(fs::is_empty(StandardPath(AppPaths.logFilePath)));
}

TEST_F(Faults, AFolderInPlaceOfTheSettingsGivesTheDefaultsAndIsUnchanged) {
    fs::create_directory(StandardPath(AppPaths.configPath));
    LoadConfig();
    EXPECT_EQ(LogLines().back(), "No config.xml found (or empty). Using defaults.");
    SaveConfig();
    EXPECT_EQ(CountLogLines("Config saved."), 0U);
    EXPECT_TRUE(fs::is_empty(StandardPath(AppPaths.configPath)));
}

TEST_F(Faults, AMissingMibsFolderOrAFileInItsPlaceGivesNoNames) {
    fs::remove_all(StandardPath(AppPaths.mibsDir));
    for (size_t loads = 1; loads <= 2; ++loads) {
        LoadMibFolder();
        EXPECT_EQ(CountLogLines("MIBs loaded. OID mappings: 0"), loads);
        EXPECT_TRUE(ListMibFiles().empty());
        WriteOctets(AppPaths.mibsDir, "a file");
    }
    EXPECT_EQ(ReadOctets(AppPaths.mibsDir), "a file");
}

TEST_F(Faults, TwoThousandMibFilesAreLoadedAndSubfoldersSkipped) {
    constexpr int kFiles = 2000;
    for (int number = 1; number <= kFiles; ++number) {
        const std::string digits = std::to_string(number);
        const std::wstring path = AppPaths.mibsDir + L"\\m" + std::to_wstring(number);
        std::string definition = "m";
        definition.append(digits)
            .append(" OBJECT IDENTIFIER ::= { enterprises ")
            .append(digits)
            .append(" }\n");
        ASSERT_TRUE(AppendOctets(path + L".mib", definition));
        if (number % 40 == 0) {
            fs::create_directories(StandardPath(path + L"folder.mib\\inside.mib"));
            ASSERT_TRUE(AppendOctets(path + L".doc", "nothing OBJECT IDENTIFIER ::= { iso 1 }"));
        }
    }
    LoadMibFolder();
    EXPECT_EQ(LogLines().back(), "MIBs loaded. OID mappings: 2000");
    EXPECT_EQ(ListMibFiles().size(), static_cast<size_t>(kFiles));
    std::wstring name;
    LookupOidName(L"1.3.6.1.4.1.2000", name);
    EXPECT_EQ(name, L"m2000");
}

}  // namespace
