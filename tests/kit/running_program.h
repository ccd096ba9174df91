// The shipped program under the check's hands: its real windows, its files, its ports.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/windows/scoped_handle.h"

// True as soon as `condition` holds; false when it still did not after `milliseconds`.
bool WaitUntil(const std::function<bool()>& condition, DWORD milliseconds = 20'000);

// Quillmont.exe of the check's own folder, from its start to its end.
class RunningProgram {
  public:
    RunningProgram();   // started; failures show in the first wait
    ~RunningProgram();  // ended, the hard way when nothing else helps
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Waits for a visible window of this program, by its class and, unless empty, its title. Null: there
    // was none.
    HWND WaitForWindow(const std::wstring& className, const std::wstring& title = {},
                       DWORD milliseconds = 20'000) const;

    // Closes the main window and waits for the end. The exit code; MAXDWORD when it did not end.
    DWORD Close();

  private:
    ScopedHandle process_;
    DWORD id_ = 0;
};

// A control of the window by its class and id, at any depth. Null: there is none.
HWND FindControl(HWND window, const std::wstring& className, int id);

// Posted, so that a click which opens a dialog returns at once.
void Click(HWND button);

// All text of the window, of any length.
std::wstring ReadText(HWND window);
size_t ReadTextLength(HWND window);
void ReplaceText(HWND window, const std::wstring& text);

std::wstring DataFolder();
// A file of the data folder, read so that nobody is kept from it; empty when there is none.
std::string ReadDataFile(const wchar_t* name);
bool WaitForText(const wchar_t* file, std::string_view text, DWORD milliseconds = 20'000);
