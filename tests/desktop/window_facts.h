// What another program's windows show from outside, as JSON.
#pragma once

#include <string>

#include "platform/windows/windows_headers.h"

// Sends with a limit of one minute, so that a hung window fails a test instead of blocking it.
// Throws RequestError if there is no answer.
LRESULT SendWithLimit(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Returns the text that WM_GETTEXT returns, of any length.
std::wstring ReadWindowText(HWND window);

// handle, class, text, id, style, exstyle, visible, enabled, owner, parent, menu, process, thread,
// rect (screen: left, top, right, bottom), place (x, y, width, height in the client area of its parent or on
// the screen). The text is the caption, read without a message to the program.
std::string DescribeWindow(HWND window);

// The visible and hidden top-level windows of a process, topmost first.
std::string ListTopLevelWindows(DWORD process);
// The direct children in the order of the window list, which is the order of creation; with their texts.
std::string ListChildren(HWND parent);
// Children, their children and so on.
std::string ListDescendants(HWND parent);

std::string ListBoxItems(HWND listBox);
std::string ComboBoxItems(HWND comboBox);
// selection (start, end), lines, firstVisibleLine, length.
std::string DescribeEdit(HWND edit);
