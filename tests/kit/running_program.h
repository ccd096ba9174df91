// The shipped program as the check runs it: its real windows, its files, its ports.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/windows/scoped_handle.h"
#include "tests/support/wait_until.h"

using namespace std::chrono_literals;

// Quillmont.exe of the check's own folder, from its start to its end.
class RunningProgram {
  public:
    RunningProgram();   // starts it; after a failure the first wait fails
    ~RunningProgram();  // closes it, or terminates it
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Waits for a visible window of this program with this class and, unless `title` is empty, this title.
    // Returns null if there is none.
    HWND WaitForWindow(const std::wstring& className, const std::wstring& title = {},
                       std::chrono::milliseconds limit = 20s) const;

    // Closes the main window and waits. Returns the exit code, or MAXDWORD if the program still runs.
    DWORD Close();

    HANDLE process() const { return process_.get(); }

  private:
    ScopedHandle process_;
    DWORD id_ = 0;
};

// Finds a control of the window by its class and id, at any depth. Returns null if there is none.
HWND FindControl(HWND window, const std::wstring& className, int id);

// Posts the command that a click on the button sends, so that a click which opens a dialog returns at once.
// Not BM_CLICK, which "might fail" while the button's dialog is not active.
void Click(HWND button);

// As SendMessageW; returns 0 if the window is closed. Throws std::runtime_error if there is no answer within
// a minute.
LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

// Returns the text of the window, of any length.
std::wstring ReadText(HWND window);
size_t ReadTextLength(HWND window);
void ReplaceText(HWND window, const std::wstring& text);

// Posts WM_CLOSE and waits. Returns false if the window is still open after that.
bool CloseWindowAndWait(HWND window);

std::wstring DataFolder();
std::wstring DataFile(const wchar_t* name);
// Returns the content of a file of the data folder; empty if there is none.
std::string ReadDataFile(const wchar_t* name);
bool WaitForText(const wchar_t* file, std::string_view text, std::chrono::milliseconds limit = 20s);
