#include "bench/floor_system.h"
#include "platform/windows/windows_headers.h"

void ShowEmptyWindow() {
    CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 694, 90, nullptr, nullptr,
                    nullptr, nullptr);
}
