// Windows for which memory runs out at each request in turn: a click that fails must leave something that the
// next click can use. The windows are real, the questions are answered by replacing the system's call.
#include "platform/windows/windows_headers.h"

#include <string>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "mib/mib_folder.h"
#include "platform/folders.h"
#include "tests/support/scarce_memory.h"
#include "tests/support/scratch_folder.h"
#include "ui/forwarding_window.h"
#include "ui/mib_import.h"
#include "ui/status_window.h"

namespace {

int WINAPI AnswerYes(HWND, const wchar_t*, const wchar_t*, UINT) {
    return IDYES;
}

}  // namespace

// The question before a deletion: the import by which the program calls the system.
extern "C" {
decltype(&MessageBoxW) __imp_MessageBoxW = AnswerYes;
}

namespace {

constexpr wchar_t kLongTarget[] = L"an address that is too long to be held without memory";

class WindowsInAShortage : public ::testing::Test {
  protected:
    void SetUp() override {
        ReplaceForwarding(true, kLongTarget, 162);
        WriteOctets(File(), "name OBJECT IDENTIFIER ::= { enterprises 77 }\n");
    }
    void TearDown() override { ReplaceForwarding(false, L"127.0.0.1", 162); }

    static std::wstring File() {
        return AppPaths.mibsDir + L"\\a file with a name that is too long to be held without memory.mib";
    }

    static HWND Window(const wchar_t* className) { return FindWindowW(className, nullptr); }
    static void Close(const wchar_t* className) {
        if (const HWND window = Window(className)) {
            DestroyWindow(window);
        }
    }

    static std::string TakeLog() {
        std::string octets = ReadOctets(AppPaths.logFilePath);
        WriteOctets(AppPaths.logFilePath, "");
        return octets;
    }

    ScratchFolder folder_;
    AppPathsGuard paths_{folder_};
};

TEST_F(WindowsInAShortage, AreShownEvenWhenTheirFirstTextsFindNoMemory) {
    struct Case {
        const wchar_t* className;
        void (*open)();
    };
    for (const Case& tool :
         {Case{L"SNMP_STATUS_WND", OpenStatusWindow}, Case{L"SNMP_FWD_WND", OpenForwardingWindow}}) {
        const size_t refused = RefuseEachRequest(
            Shortage::OneRequest, [&] { Close(tool.className); }, tool.open,
            [&](const Attempt& attempt, size_t) {
                EXPECT_EQ(attempt.outcome, Outcome::Returned);
                EXPECT_TRUE(IsWindowVisible(Window(tool.className)));
            });
        EXPECT_GT(refused, 0U);
        Close(tool.className);
    }
}

TEST_F(WindowsInAShortage, ASaveThatHoldsClosesTheWindowAndOneThatDoesNotChangesNothing) {
    constexpr wchar_t className[] = L"SNMP_FWD_WND";
    constexpr wchar_t otherTarget[] = L"another address that is too long to be held without memory";
    const auto openAndType = [&] {
        Close(className);
        ReplaceForwarding(true, kLongTarget, 162);
        OpenForwardingWindow();
        const HWND address = FindWindowExW(Window(className), nullptr, L"Edit", nullptr);
        SetWindowTextW(address, otherTarget);
        TakeLog();
    };
    const auto save = [&] { SendMessageW(Window(className), WM_COMMAND, 200, 0); };
    size_t held = 0;
    const size_t refused =
        RefuseEachRequest(Shortage::OneRequest, openAndType, save, [&](const Attempt&, size_t) {
            const bool changed = CopyForwarding().ip == otherTarget;
            EXPECT_EQ(Window(className) == nullptr, changed) << "closed exactly when the settings hold";
            held += changed ? 1 : 0;
        });
    EXPECT_GT(held, 1U);
    EXPECT_LT(held, refused);
    Close(className);
}

TEST_F(WindowsInAShortage, ADeletionSaysHowItWentAndLoadsTheFolder) {
    size_t unsaid = 0;
    const size_t refused = RefuseEachRequest(
        Shortage::OneRequest,
        [&] {
            SetUp();
            TakeLog();
        },
        DeleteAllMibs,
        [&](const Attempt& attempt, size_t) {
            EXPECT_EQ(attempt.outcome, Outcome::Returned);
            const std::string log = TakeLog();
            const bool saidDeleted = log.find("All MIB files deleted.") != std::string::npos;
            const bool said = saidDeleted || log.find("Delete MIBs failed.") != std::string::npos;
            EXPECT_FALSE(saidDeleted && PathExists(File())) << "none of the files is left when it says so";
            const bool loaded = log.find("MIBs loaded. OID mappings: ") != std::string::npos;
            unsaid += said && loaded ? 0 : 1;
        });
    // Each of the two lines asks for memory itself, twice, and is lost when that is refused.
    EXPECT_LE(unsaid, 4U);
    EXPECT_GT(refused, unsaid + 2);
}

}  // namespace
