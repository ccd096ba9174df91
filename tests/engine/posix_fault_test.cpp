// Faults that a test can cause only on POSIX: files without permissions, links, pipes, a full disk, and a
// process that is killed while it writes.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "config/config_file.h"
#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "mib/mib_folder.h"
#include "mib/name_store.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "tests/engine/engine_fixture.h"
#include "tests/support/stamps.h"
#include "trap/server_control.h"

namespace {

namespace fs = std::filesystem;

// The tests run as root of their namespace, and file permissions do not apply to root. This drops that
// privilege, but not the one to bind low ports, for the calling thread and the threads that it starts.
class WithoutFilePrivileges {
  public:
    WithoutFilePrivileges() {
        syscall(SYS_capget, &header_, old_);
        __user_cap_data_struct less[2] = {old_[0], old_[1]};
        less[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        EXPECT_EQ(syscall(SYS_capset, &header_, less), 0);
    }
    ~WithoutFilePrivileges() { syscall(SYS_capset, &header_, old_); }
    WithoutFilePrivileges(const WithoutFilePrivileges&) = delete;
    WithoutFilePrivileges& operator=(const WithoutFilePrivileges&) = delete;

  private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct old_[2] = {};
};

class PosixFaults : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        ReplaceForwarding(true, L"127.0.0.1", target_.port());
    }

    static void Allow(const std::wstring& path, unsigned mode) {
        ASSERT_EQ(chmod(StandardPath(path).c_str(), mode), 0) << StandardPath(path);
    }

    static void WriteMib(const std::string& name, const std::string& definition) {
        std::ofstream(StandardPath(AppPaths.mibsDir) / name, std::ios::binary)
            << definition << " OBJECT IDENTIFIER ::= { enterprises 9999 }\n";
    }

    void ExpectTrapsAreStillHandled() {
        const Octets& trap = Sample("v2_link_down");
        client_.Send(trap);
        EXPECT_EQ(target_.Receive(), trap);
    }

    LoopbackClient client_;
    LoopbackClient target_;
};

TEST_F(PosixFaults, WithAReadOnlyDataFolderTheReceiverRunsAndChangesNoFile) {
    WriteOctets(AppPaths.trapFilePath, "old records");
    WriteOctets(AppPaths.logFilePath, "old lines");
    for (const std::wstring& path : {AppPaths.trapFilePath, AppPaths.logFilePath}) {
        Allow(path, 0444);
    }
    Allow(AppPaths.dataDir, 0555);
    {
        const WithoutFilePrivileges asUser;
        ASSERT_TRUE(StartServer());
        ExpectTrapsAreStillHandled();
        SaveConfig();
        StopServer();
    }
    Allow(AppPaths.dataDir, 0755);
    EXPECT_EQ(ReadOctets(AppPaths.trapFilePath), "old records");
    EXPECT_EQ(ReadOctets(AppPaths.logFilePath), "old lines");
    EXPECT_FALSE(PathExists(AppPaths.configPath));
}

TEST_F(PosixFaults, UnreadableSettingsAndMibFilesAreIgnored) {
    WriteMib("a.mib", "unreadable");
    WriteMib("b.mib", "readable");
    WriteOctets(AppPaths.configPath, "<forwardingPort>9</forwardingPort>");
    Allow(AppPaths.mibsDir + L"\\a.mib", 0);
    Allow(AppPaths.configPath, 0);
    ReplaceForwarding(false, L"127.0.0.1", 162);
    const WithoutFilePrivileges asUser;
    LoadConfig();
    EXPECT_EQ(LogLines().back(), "No config.xml found (or empty). Using defaults.");
    EXPECT_EQ(CopyForwarding().port, 162);
    SaveConfig();
    EXPECT_EQ(CountLogLines("Config saved."), 0U);
    LoadMibFolder();
    EXPECT_EQ(LogLines().back(), "MIBs loaded. OID mappings: 1");
    EXPECT_EQ(ListMibFiles(), (std::vector<std::wstring>{L"a.mib", L"b.mib"})) << "both are listed";
}

TEST_F(PosixFaults, AnInaccessibleMibsFolderGivesNoNames) {
    WriteMib("a.mib", "hidden");
    for (const unsigned mode : {0000U, 0444U, 0111U}) {
        Allow(AppPaths.mibsDir, mode);
        const WithoutFilePrivileges asUser;
        LoadMibFolder();
        EXPECT_EQ(LogLines().back(), "MIBs loaded. OID mappings: 0") << std::oct << mode;
    }
    Allow(AppPaths.mibsDir, 0755);
}

TEST_F(PosixFaults, SymbolicLinksAreFollowed) {
    const fs::path mibs = StandardPath(AppPaths.mibsDir);
    WriteMib("target.doc", "linked");
    fs::create_symlink(mibs / "target.doc", mibs / "file.mib");
    fs::create_symlink(mibs / "nowhere", mibs / "dangling.mib");
    fs::create_symlink(mibs / "circle.mib", mibs / "circle.mib");
    fs::create_directory_symlink(mibs, mibs / "folder.mib");
    LoadMibFolder();
    EXPECT_EQ(LogLines().back(), "MIBs loaded. OID mappings: 1");
    EXPECT_EQ(ListMibFiles(), std::vector<std::wstring>{L"file.mib"});
}

// Opening a pipe without a writer would block forever.
TEST_F(PosixFaults, APipeNamedLikeAMibFileIsNotOpened) {
    ASSERT_EQ(mkfifo((StandardPath(AppPaths.mibsDir) / "pipe.mib").c_str(), 0600), 0);
    WriteMib("real.mib", "real");
    LoadMibFolder();
    EXPECT_EQ(LogLines().back(), "MIBs loaded. OID mappings: 1");
}

std::string MaskStamp(std::string record) {
    return record.replace(0, std::min(kStampLength, record.size()), std::min(kStampLength, record.size()),
                          '#');
}

// Checks that `octets`, written by one process, are whole records, the last one possibly truncated. Returns
// whether it is.
bool CheckRecordsOfOneRun(std::string_view octets, const std::string& expected) {
    size_t at = 0;
    for (; at + expected.size() <= octets.size(); at += expected.size()) {
        EXPECT_TRUE(IsStamp(octets.substr(at, kStampLength)));
        EXPECT_EQ(MaskStamp(std::string(octets.substr(at, expected.size()))), expected);
    }
    const std::string rest(octets.substr(at));
    EXPECT_EQ(MaskStamp(rest), expected.substr(0, rest.size()));
    return !rest.empty();
}

// Mounts a small tmpfs over the data folder, visible only to the calling thread and the threads it starts.
class FullDisk : public PosixFaults {
  protected:
    static constexpr size_t kDiskSize = size_t{128} << 10;

    void SetUp() override {
        PosixFaults::SetUp();
        folder_ = StandardPath(AppPaths.dataDir);
        mounted_ = unshare(CLONE_NEWNS) == 0 &&
                   mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                   mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=128k") == 0;
        if (!mounted_) {
            GTEST_SKIP() << "mounting a tmpfs is not permitted here";
        }
    }

    void TearDown() override {
        PosixFaults::TearDown();
        if (mounted_) {
            EXPECT_EQ(umount(folder_.c_str()), 0);
        }
    }

    void FillDisk() const {
        std::ofstream filler(folder_ + "/filler", std::ios::binary);
        filler << std::string(2 * kDiskSize, 'x') << std::flush;
        EXPECT_FALSE(filler.good()) << "the disk is larger than expected";
    }

    void FillDiskExcept(size_t octets) const {
        FillDisk();
        fs::resize_file(folder_ + "/filler", fs::file_size(folder_ + "/filler") - octets);
    }

    void FreeDisk() const { fs::remove(folder_ + "/filler"); }

  private:
    std::string folder_;
    bool mounted_ = false;
};

// The trap thread waits for MibStoreLock, so that most traps form one batch.
TEST_F(FullDisk, TheFirstRecordThatDoesNotFitIsTruncatedAndAllTrapsAreForwarded) {
    constexpr size_t kTraps = 100;
    const Octets& trap = Sample("v2_link_down");
    const std::string record = std::string(kStampLength, '#') + "       FROM: 127.0.0.1\r\r\n" +
                               ExpectedLines("v2_link_down") + "\r\r\n\r\r\n";
    ASSERT_TRUE(StartServer());
    FillDiskExcept(size_t{16} << 10);
    {
        const std::lock_guard lock(MibStoreLock);
        for (size_t sent = 0; sent < kTraps; ++sent) {
            client_.Send(trap);
        }
    }
    for (size_t received = 0; received < kTraps; ++received) {
        ASSERT_EQ(target_.Receive(), trap);
    }
    StopServer();  // a batch's records are written after its last datagram is sent
    const std::string fitted = TrapFile();
    EXPECT_TRUE(CheckRecordsOfOneRun(fitted, record)) << "no record was truncated";
    EXPECT_GT(fitted.size(), size_t{8} << 10) << "free space was left";
    EXPECT_LT(fitted.size(), kTraps * record.size()) << "the disk was never full";
    FreeDisk();
    ASSERT_TRUE(StartServer());
    ExpectTrapsAreStillHandled();
    StopServer();
    const std::string all = TrapFile();
    ASSERT_EQ(all.size(), fitted.size() + record.size());
    EXPECT_EQ(all.substr(0, fitted.size()), fitted);
    EXPECT_FALSE(CheckRecordsOfOneRun(std::string_view(all).substr(fitted.size()), record));
}

TEST_F(FullDisk, ATruncatedCopyFails) {
    const std::wstring source = AppPaths.dataDir + L"\\source.mib";
    WriteOctets(source, std::string(size_t{32} << 10, 'x'));
    FillDiskExcept(size_t{16} << 10);
    EXPECT_FALSE(CopyFileOver(source, AppPaths.dataDir + L"\\target.mib"));
    FreeDisk();
}

TEST_F(FullDisk, SettingsAreTruncatedAndCanBeSavedAgainLater) {
    WriteOctets(AppPaths.configPath, "");
    FillDisk();
    SaveConfig();
    EXPECT_EQ(ReadOctets(AppPaths.configPath), "");
    FreeDisk();
    SaveConfig();
    EXPECT_EQ(ReadOctets(AppPaths.configPath).substr(0, 8), "<config>");
}

// Runs the receiver in a child process and kills it during a flood of traps.
class Killed : public EngineTest {
  protected:
    // Starts the child process. Returns in the parent only, once the child receives traps.
    static pid_t StartReceiverProcess(size_t earlierStarts) {
        const pid_t child = fork();
        if (child == 0) {
            StartServer();
            for (;;) {
                pause();
            }
        }
        EXPECT_TRUE(WaitUntil([&] { return CountStarts() > earlierStarts; }));
        return child;
    }

    // Does not split the log into lines, since a truncated line has no end.
    static size_t CountStarts() {
        const std::string log = ReadOctets(AppPaths.logFilePath);
        size_t count = 0;
        for (size_t at = 0; (at = log.find("Trap thread started (UDP 162).\r\r\n", at)) != std::string::npos;
             ++at) {
            ++count;
        }
        return count;
    }

    static void Kill(pid_t child) {
        EXPECT_EQ(kill(child, SIGKILL), 0);
        EXPECT_EQ(waitpid(child, nullptr, 0), child);
    }
};

TEST_F(Killed, AKillInAFloodTruncatesAtMostTheLastRecordAndTheNextStartAppends) {
    constexpr int kKills = 50;
    // Records of several pages, so that a kill may interrupt a write.
    const Octets trap = EncodeV2Trap({{"1.3.6.1.4.1.9999.1", EncodeOctetString(std::string(16000, 'x'))}});
    const std::string expected = std::string(kStampLength, '#') + "       FROM: 127.0.0.1\r\r\n" +
                                 "---> [1] 1.3.6.1.4.1.9999.1  OCTET STRING = \"" + std::string(16000, 'x') +
                                 "\"\r\r\n\r\r\n";
    LoopbackClient client;
    std::string before;
    int truncated = 0;
    for (int round = 0; round < kKills; ++round) {
        const pid_t child = StartReceiverProcess(CountStarts());
        // The number of records before the kill varies. Traps are still queued at the kill.
        const size_t enough = before.size() + static_cast<size_t>(1 + round % 5) * expected.size();
        while (QueryFileSize(AppPaths.trapFilePath).value_or(0) < enough) {
            client.Send(trap);
        }
        for (int more = 0; more < 20; ++more) {
            client.Send(trap);
        }
        Kill(child);
        const std::string after = ReadOctets(AppPaths.trapFilePath);
        ASSERT_EQ(after.substr(0, before.size()), before)
            << "round " << round << ": an earlier record changed";
        truncated += CheckRecordsOfOneRun(std::string_view(after).substr(before.size()), expected) ? 1 : 0;
        ASSERT_FALSE(HasFailure()) << "round " << round;
        before = after;
        if (round % 10 == 9) {
            // Each round reads the whole file: limit its size.
            ClearFile(AppPaths.trapFilePath);
            before.clear();
        }
    }
    std::printf("%d of %d kills truncated a record.\n", truncated, kKills);
}

}  // namespace
