#include "ui/forwarding_window.h"

#include <string>

#include "config/config_file.h"
#include "config/forwarding_settings.h"
#include "core/activity_log.h"
#include "core/decimal_text.h"
#include "platform/windows/windows_headers.h"
#include "ui/exception_guard.h"
#include "ui/window_helpers.h"

namespace {

HWND ForwardingWindowHandle = nullptr;
HWND ForwardEnabledCheck = nullptr;
HWND ForwardIpEdit = nullptr;
HWND ForwardPortEdit = nullptr;

constexpr int kSaveCommand = 200;
constexpr int kCancelCommand = 201;

// Intentional: the port field accepts any text, which is checked when it is saved, and no control is a
// tab stop.
constexpr ControlRow kForwardingControls[] = {
    {.className = L"STATIC", .text = L"Forwarding enabled:", .place = {20, 20, 150, 20}},
    {.className = L"BUTTON",
     .text = L"On/Off",
     .style = BS_AUTOCHECKBOX,
     .place = {180, 18, 100, 22},
     .handle = &ForwardEnabledCheck},
    {.className = L"STATIC", .text = L"Forward IP:", .place = {20, 60, 150, 20}},
    {.className = L"EDIT",
     .style = ES_AUTOHSCROLL,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = {180, 58, 200, 24},
     .handle = &ForwardIpEdit},
    {.className = L"STATIC", .text = L"Forward Port:", .place = {20, 95, 150, 20}},
    {.className = L"EDIT",
     .style = ES_AUTOHSCROLL,
     .exStyle = WS_EX_CLIENTEDGE,
     .place = {180, 93, 80, 24},
     .handle = &ForwardPortEdit},
    {.className = L"BUTTON", .text = L"Save", .place = {180, 135, 90, 28}, .id = kSaveCommand},
    {.className = L"BUTTON", .text = L"Cancel", .place = {290, 135, 90, 28}, .id = kCancelCommand},
};

void FillForwardingControls() {
    if (!ForwardingWindowHandle) {
        return;
    }
    const ForwardingValues forwarding = CopyForwarding();
    std::wstring port;
    AppendSignedDecimal(port, forwarding.port);
    SendMessageW(ForwardEnabledCheck, BM_SETCHECK, forwarding.enabled ? BST_CHECKED : BST_UNCHECKED, 0);
    SetWindowTextW(ForwardIpEdit, forwarding.ip.c_str());
    SetWindowTextW(ForwardPortEdit, port.c_str());
}

// Returns the text as typed, neither trimmed nor checked, or 127.0.0.1 for an empty field. The count includes
// the terminator: at most 254 characters are read.
std::wstring ReadIpField() {
    wchar_t text[256] = {};
    GetWindowTextW(ForwardIpEdit, text, 255);
    return text[0] ? text : L"127.0.0.1";
}

int32_t ReadPortField() {
    wchar_t text[64] = {};
    GetWindowTextW(ForwardPortEdit, text, 63);
    return ParseDecimalInt(text);
}

// The fields are not refilled with the corrected values, since the window closes at once.
void SaveForwarding(HWND window) {
    const bool enabled = SendMessageW(ForwardEnabledCheck, BM_GETCHECK, 0, 0) == BST_CHECKED;
    ReplaceForwarding(enabled, ReadIpField(), ReadPortField());
    SaveConfig();
    LogMessage(L"Forwarding updated.");
    DestroyWindow(window);
}

bool RunCommand(HWND window, int command) {
    switch (command) {
        case kSaveCommand:
            SaveForwarding(window);
            return true;
        case kCancelCommand:
            DestroyWindow(window);
            return true;
        default:
            return false;
    }
}

LRESULT CALLBACK ForwardingWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            if (RunCommand(window, LOWORD(wParam))) {
                return 0;
            }
            break;
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_DESTROY:
            ForwardingWindowHandle = nullptr;
            return 0;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORSTATIC:
            return ColorControl(wParam);
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

constexpr ToolWindow kForwardingTool = {
    .className = L"SNMP_FWD_WND",
    .title = L"Forwarding",
    .style = WS_CAPTION | WS_SYSMENU,
    .width = 420,
    .height = 210,
    .procedure = GuardedProc<ForwardingWindowProc>,
    .handle = &ForwardingWindowHandle,
};

}  // namespace

void OpenForwardingWindow() {
    if (!RaiseOrCreate(kForwardingTool, kForwardingControls)) {
        return;
    }
    FillForwardingControls();
    ApplyUiFont(ForwardingWindowHandle);
    ShowWindow(ForwardingWindowHandle, SW_SHOW);
}
