// Exceptions must not reach the system: a window procedure that throws returns 0.
#include "ui/exception_guard.h"

#include <gtest/gtest.h>

#include <new>
#include <system_error>

namespace {

constexpr wchar_t kClass[] = L"QUILLMONT_THROWING_WND";

LRESULT CALLBACK ThrowingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            throw std::bad_alloc();
        case WM_CLOSE:
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

// A message-only window, which needs no display.
HWND CreateThrowingWindow() {
    WNDCLASSW description{};
    description.lpfnWndProc = GuardedProc<ThrowingProc>;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = kClass;
    RegisterClassW(&description);
    return CreateWindowExW(0, kClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, description.hInstance,
                           nullptr);
}

TEST(GuardedProc, AHandlerThatThrowsReturns0AndTheWindowSurvives) {
    const HWND window = CreateThrowingWindow();
    ASSERT_NE(window, nullptr);
    for (int count = 0; count < 100; ++count) {
        EXPECT_EQ(SendMessageW(window, WM_COMMAND, 1, 0), 0);
    }
    EXPECT_TRUE(IsWindow(window));
    DestroyWindow(window);
}

TEST(GuardedProc, ClosesAWindowWhoseCloseHandlerThrows) {
    const HWND window = CreateThrowingWindow();
    ASSERT_NE(window, nullptr);
    SendMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(window));
}

}  // namespace
