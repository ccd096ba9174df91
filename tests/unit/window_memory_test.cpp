// Real windows when memory runs out at any allocation: after a click that failed, the next one works.
#include "platform/windows/windows_headers.h"

#include <string>
#include <string_view>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "platform/files.h"
#include "tests/support/scarce_memory.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/wait_until.h"
#include "trap/server_state.h"
#include "ui/forwarding_window.h"
#include "ui/mib_import.h"
#include "ui/status_window.h"
#include "ui/view_text.h"
#include "ui/viewer_window.h"

namespace {

int WINAPI AnswerYes(HWND, LPCWSTR, LPCWSTR, UINT) {
    return IDYES;
}

}  // namespace

// The imported function is called through this pointer. The linker prefers it to the import library's.
extern "C" {
decltype(&MessageBoxW) __imp_MessageBoxW = AnswerYes;
}

namespace {

constexpr wchar_t kNoTrap[] = L"Last trap:             (none)";
constexpr wchar_t kLongTarget[] = L"an address that is too long for a text without an allocation";

class WindowsInAShortage : public ::testing::Test {
  protected:
    void SetUp() override { ReplaceForwarding(true, kLongTarget, 162); }
    void TearDown() override { ReplaceForwarding(false, L"127.0.0.1", 162); }

    static HWND Window(const wchar_t* className) { return FindWindowW(className, nullptr); }
    static void Close(const wchar_t* className) {
        if (const HWND window = Window(className)) {
            DestroyWindow(window);
        }
    }
    static std::wstring ReadViewText(const wchar_t* className) {
        const HWND edit = FindWindowExW(Window(className), nullptr, L"Edit", nullptr);
        std::wstring text(static_cast<size_t>(GetWindowTextLengthW(edit)), L'\0');
        GetWindowTextW(edit, text.data(), static_cast<int>(text.size() + 1));
        return text;
    }
    static void HandleMessages() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }

    ScratchFolder folder_;
    AppPathsGuard paths_{folder_};
};

TEST_F(WindowsInAShortage, AreShownByTheNextClick) {
    struct Case {
        const wchar_t* className;
        void (*open)();
    };
    for (const Case& tool :
         {Case{L"SNMP_STATUS_WND", OpenStatusWindow}, Case{L"SNMP_FWD_WND", OpenForwardingWindow}}) {
        const size_t refused = RefuseEachRequest(
            Shortage::OneRequest, [&] { Close(tool.className); }, tool.open,
            [&](const Attempt&, size_t) {
                tool.open();
                EXPECT_TRUE(IsWindowVisible(Window(tool.className)));
            });
        EXPECT_GT(refused, 0U);
        Close(tool.className);
    }
}

TEST_F(WindowsInAShortage, AViewShowsItsFileOrItsSize) {
    constexpr wchar_t className[] = L"SNMP_MON_WND";
    const std::string octets(5000, 'x');
    WriteOctets(AppPaths.trapFilePath, octets);
    const std::wstring whole = BuildViewText(std::wstring(octets.begin(), octets.end()));
    const std::wstring sentence = BuildTooLargeText(octets.size());
    size_t explained = 0;
    const size_t refused = RefuseEachRequest(
        Shortage::OneRequest, [&] { Close(className); }, OpenMonitorWindow,
        [&](const Attempt& attempt, size_t) {
            EXPECT_EQ(attempt.outcome, Outcome::Returned);
            const std::wstring text = ReadViewText(className);
            EXPECT_TRUE(text == whole || text == sentence) << text.size();
            explained += text == sentence ? 1 : 0;
        });
    EXPECT_GT(explained, 0U);
    EXPECT_LE(explained, refused);
    Close(className);
}

TEST_F(WindowsInAShortage, AViewThatOpenedWithoutMemoryStillFollowsItsFile) {
    constexpr wchar_t className[] = L"SNMP_MON_WND";
    WriteOctets(AppPaths.trapFilePath, std::string(5000, 'x'));
    const size_t refused = RefuseEachRequest(
        Shortage::ThatAndAllLater, [&] { Close(className); }, OpenMonitorWindow,
        [&](const Attempt&, size_t request) {
            OpenMonitorWindow();
            EXPECT_TRUE(IsWindowVisible(Window(className)));
            const std::wstring added = L"added after request " + std::to_wstring(request);
            AppendToFile(AppPaths.trapFilePath, added);
            EXPECT_TRUE(WaitUntil([&] {
                HandleMessages();
                return ReadViewText(className).find(added) != std::wstring::npos;
            }));
        });
    EXPECT_GT(refused, 0U);
    Close(className);
}

TEST_F(WindowsInAShortage, AStatusWindowThatOpenedWithoutMemoryStillRefreshes) {
    constexpr wchar_t className[] = L"SNMP_STATUS_WND";
    ServerState.lastTrapTick = 0;
    const size_t refused = RefuseEachRequest(
        Shortage::ThatAndAllLater, [&] { Close(className); }, OpenStatusWindow,
        [&](const Attempt&, size_t) {
            OpenStatusWindow();
            EXPECT_TRUE(WaitUntil([&] {
                HandleMessages();
                return FindWindowExW(Window(className), nullptr, L"Static", kNoTrap) != nullptr;
            }));
        });
    EXPECT_GT(refused, 0U);
    Close(className);
}

TEST_F(WindowsInAShortage, ADeletionWithoutMemoryIsLoggedAsFailed) {
    const std::wstring file = AppPaths.mibsDir + L"\\some.mib";
    const auto prepare = [&] {
        WriteOctets(file, "some OBJECT IDENTIFIER ::= { enterprises 1 }\n");
        WriteOctets(AppPaths.logFilePath, "");
    };
    size_t failed = 0;
    RefuseEachRequest(
        Shortage::OneRequest, prepare, [] { DeleteAllMibs(nullptr); },
        [&](const Attempt& attempt, size_t) {
            EXPECT_EQ(attempt.outcome, Outcome::Returned);
            const std::string log = ReadOctets(AppPaths.logFilePath);
            if (QueryFileSize(file)) {
                ++failed;
                EXPECT_NE(log.find("Delete MIBs failed."), std::string::npos);
                EXPECT_NE(log.find("MIBs loaded. OID mappings: 1"), std::string::npos);
            } else {
                EXPECT_EQ(log.find("Delete MIBs failed."), std::string::npos);
            }
        });
    EXPECT_GT(failed, 0U);
}

}  // namespace
