// Files that other programs use, protected files, and files chosen in the system's dialog.
#include "tests/kit/self_check.h"

#include <filesystem>

#include "tests/support/sample_messages.h"

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kProtected = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY;

class Files : public SelfCheck {
  protected:
    static ScopedHandle OpenTraps(DWORD access, DWORD share) {
        return ScopedHandle(
            CreateFileW(DataFile(kTraps).c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
    }

    // Sends a trap, waits for its log line and returns the number of records. A record precedes its log line.
    size_t RecordsAfterATrap() {
        Send(FindSample("v2_link_down").octets);
        EXPECT_TRUE(WaitForTraps(++sent_));
        return CountOf(ReadDataFile(kTraps), "FROM: ");
    }

    HWND OpenStatus() const {
        const HWND status = Open(kStatusButton, L"SNMP_STATUS_WND");
        EXPECT_NE(status, nullptr);
        return status;
    }

    size_t sent_ = 0;
};

TEST_F(Files, MayBeDeletedAndMovedWhileTheProgramRuns) {
    EXPECT_EQ(RecordsAfterATrap(), 1U);
    EXPECT_TRUE(DeleteFileW(DataFile(kTraps).c_str())) << GetLastError();
    EXPECT_TRUE(MoveFileW(DataFile(kLog).c_str(), DataFile(L"moved.txt").c_str())) << GetLastError();
    sent_ = 0;
    EXPECT_EQ(RecordsAfterATrap(), 1U);
}

TEST_F(Files, AReaderAndAWriterThatShareDoNotStopTheProgram) {
    ASSERT_EQ(RecordsAfterATrap(), 1U);
    const ScopedHandle reader = OpenTraps(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(reader);
    EXPECT_EQ(RecordsAfterATrap(), 2U);
    const ScopedHandle writer = OpenTraps(GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(writer);
    EXPECT_EQ(RecordsAfterATrap(), 3U);
}

TEST_F(Files, TrapsAreLostOnlyWhileAnotherProgramDeniesSharing) {
    ASSERT_EQ(RecordsAfterATrap(), 1U);
    {
        const ScopedHandle alone = OpenTraps(GENERIC_READ, 0);
        ASSERT_TRUE(alone);
        RecordsAfterATrap();
    }
    EXPECT_EQ(RecordsAfterATrap(), 2U);
}

// It depends on the Windows version whether a deleted file exists until its last reader closes it.
TEST_F(Files, TrapsAreRecordedAfterADeletionWithAnOpenReader) {
    ASSERT_EQ(RecordsAfterATrap(), 1U);
    {
        const ScopedHandle reader = OpenTraps(GENERIC_READ, kShareAll);
        ASSERT_TRUE(reader);
        EXPECT_TRUE(DeleteFileW(DataFile(kTraps).c_str())) << GetLastError();
        Fact(std::string("a trap while a reader still has the deleted SNMP.txt open is recorded: ") +
             (RecordsAfterATrap() == 1 ? "yes" : "no"));
    }
    RecordsAfterATrap();
    EXPECT_NE(ReadDataFile(kTraps).find("FROM: "), std::string::npos);
}

TEST_F(Files, AHiddenSystemFileIsAppendedToAndCleared) {
    ASSERT_EQ(RecordsAfterATrap(), 1U);
    ASSERT_TRUE(SetFileAttributesW(DataFile(kTraps).c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
    EXPECT_EQ(RecordsAfterATrap(), 2U);
    const HWND monitor = Open(kMonitorButton, L"SNMP_MON_WND");
    Click(FindControl(monitor, L"Button", kClearMonitorButton));
    ASSERT_TRUE(WaitForText(kLog, "SNMP.txt cleared."));
    EXPECT_EQ(ReadDataFile(kTraps), "");
}

TEST_F(Files, AReadOnlySnmpTxtDoesNotStopTheProgram) {
    ASSERT_EQ(RecordsAfterATrap(), 1U);
    ASSERT_TRUE(SetFileAttributesW(DataFile(kTraps).c_str(), FILE_ATTRIBUTE_READONLY));
    Fact(std::string("a trap while SNMP.txt is read-only is recorded: ") +
         (RecordsAfterATrap() == 2 ? "yes" : "no"));
    const size_t before = CountOf(ReadDataFile(kTraps), "FROM: ");
    ASSERT_TRUE(SetFileAttributesW(DataFile(kTraps).c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(RecordsAfterATrap(), before + 1);
}

TEST_F(Files, AProtectedMibFileIsImportedOverAProtectedOneAndDeleted) {
    const std::wstring file = MakeMib(L"protected.mib");
    const std::wstring target = DataFile(L"mibs\\protected.mib");
    ASSERT_TRUE(SetFileAttributesW(file.c_str(), kProtected));
    const HWND status = OpenStatus();
    for (size_t time = 1; time <= 2; ++time) {
        Import(status, {file});
        EXPECT_TRUE(WaitUntil([&] { return CountLogLines("MIBs loaded. OID mappings: 1") == time; }))
            << ReadDataFile(kLog);
        EXPECT_TRUE(SetFileAttributesW(target.c_str(), kProtected));
    }
    EXPECT_EQ(CountLogLines("MIB import failed."), 0U);
    DeleteAllMibs(status);
    EXPECT_TRUE(WaitForText(kLog, "All MIB files deleted."));
    EXPECT_FALSE(std::filesystem::exists(target));
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Files, SeveralMibFilesOfOneFolderAreImportedTogether) {
    MakeMib(L"one.mib");
    MakeMib(L"two words.mib");
    Import(OpenStatus(), {scratch_.path().wstring(), L"\"one.mib\" \"two words.mib\""});
    EXPECT_TRUE(WaitForText(kLog, "MIB imported: one.mib"));
    EXPECT_TRUE(WaitForText(kLog, "MIB imported: two words.mib"));
}

// Files chosen from search results can be in different folders.
TEST_F(Files, ImportingFromTwoFoldersDoesNotStopTheReceiver) {
    std::filesystem::create_directory(scratch_.path() / "below");
    const std::wstring texts = L"\"" + MakeMib(L"one.mib") + L"\" \"" + MakeMib(L"below\\two.mib") + L"\"";
    const HWND dialog = OpenFileDialog(OpenStatus());
    TypeName(dialog, texts);
    const bool closed = WaitUntil([&] { return !IsWindow(dialog); }, 5s);
    WaitUntil([] { return CountLogLines("MIB imported: ") == 2; }, closed ? 5s : 0s);
    Fact("two MIB files from two folders: the dialog " +
         std::string(closed ? "accepts them, " : "does not accept them, ") +
         std::to_string(CountLogLines("MIB imported: ")) + " imported");
    EXPECT_EQ(CountLogLines("Trap thread stopped."), 0U) << "the receiver stopped";
}

}  // namespace
