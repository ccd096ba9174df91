// Facts about another program's windows, as JSON.
#pragma once

#include <string>

#include "platform/windows/windows_headers.h"

// Waits at most one minute for the reply: a hung window fails a test instead of blocking it. Throws
// RequestError if there is no reply.
LRESULT SendWithLimit(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Returns the text that WM_GETTEXT returns, of any length.
std::wstring ReadWindowText(HWND window);

// handle, class, text, id, style, exstyle, visible, enabled, owner, parent, menu, process, thread,
// rect (left, top, right, bottom on the screen), place (x, y, width, height; for a child in its parent's
// client area). The text is the caption, read without a message to the program.
std::string DescribeWindow(HWND window);

// The visible and hidden top-level windows of a process, topmost first.
std::string ListTopLevelWindows(DWORD process);
// The direct children with their texts, in the order of creation.
std::string ListChildren(HWND parent);
// The children, their children and so on.
std::string ListDescendants(HWND parent);

std::string ListBoxItems(HWND listBox);
std::string ComboBoxItems(HWND comboBox);
// selection (start, end), lines, firstVisibleLine, length.
std::string DescribeEdit(HWND edit);
