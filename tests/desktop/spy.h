// The driver's side of the spy: loads quillmont_desktop_spy.dll from the driver's folder into the program
// under test and queries it. One program at a time: attaching to another one detaches the first.
#pragma once

#include <string>
#include <vector>

#include "platform/windows/windows_headers.h"
#include "tests/desktop/spy_memory.h"

// All throw RequestError on failure and return JSON.

// Hooks the thread that owns the window.
std::string AttachSpy(HWND window);
std::string AskSpy(HWND window, SpyQuestion question, UINT message);
// Timer messages since the spy was attached as [window, timer, milliseconds], oldest first.
std::string ReadSpyTimers();
// System calls of the program since the spy was attached, as texts (spy_calls.h), oldest first.
std::string ReadSpyCalls();
// The next file dialog is not shown; its buffer contains these texts.
std::string ChooseInNextDialog(const std::vector<std::wstring>& texts);
// Appends these octets to the file just before the program next opens it for reading.
std::string AppendBeforeNextRead(const std::wstring& path, const std::wstring& octets);
