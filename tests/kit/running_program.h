// The shipped program with its real windows and files.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/windows/scoped_handle.h"
#include "tests/support/wait_until.h"

using namespace std::chrono_literals;

// Runs the Quillmont.exe of the check's own folder.
class RunningProgram {
  public:
    RunningProgram();   // starts it; if that fails, the first wait fails
    ~RunningProgram();  // closes it, or terminates it
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Waits for a visible window of this program with this class and, unless `title` is empty, this title.
    // Returns null if there is none within the limit.
    HWND WaitForWindow(const std::wstring& className, const std::wstring& title = {},
                       std::chrono::milliseconds limit = 20s) const;

    // Closes the main window and waits. Returns the exit code, or MAXDWORD if the program is still running.
    DWORD Close();

    HANDLE process() const { return process_.get(); }

  private:
    ScopedHandle process_;
    DWORD id_ = 0;
};

// Finds a control of the window by its class and id, at any depth. Returns null if there is none.
HWND FindControl(HWND window, const std::wstring& className, int id);

// Posts the command that a click on the button sends. Returns at once, even if the click opens a dialog.
// BM_CLICK could fail while the button's dialog is not active.
void Click(HWND button);

// Like SendMessageW. Returns 0 if the window has been closed. Throws std::runtime_error if the window does
// not answer within a minute.
LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

// Returns the text of the window, of any length.
std::wstring ReadText(HWND window);
size_t ReadTextLength(HWND window);
void ReplaceText(HWND window, const std::wstring& text);

// Posts WM_CLOSE and waits. Returns false if the window stays open.
bool CloseWindowAndWait(HWND window);

// Returns the path of a file in the data folder.
std::wstring DataFile(const wchar_t* name);
// Returns the content of a file in the data folder, or an empty text if there is no such file.
std::string ReadDataFile(const wchar_t* name);
bool WaitForText(const wchar_t* file, std::string_view text, std::chrono::milliseconds limit = 20s);
