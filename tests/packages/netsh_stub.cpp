// A stub for netsh.exe: appends each command line to C:\netsh\calls.txt and returns the exit code of the
// first matching line of C:\netsh\answers.txt ("1 delete rule"), or 0.
#include <windows.h>

#include <fstream>
#include <string>

namespace {

int FindAnswer(const std::string& commandLine) {
    std::ifstream answers("C:\\netsh\\answers.txt");
    int code = 0;
    for (std::string text; answers >> code && std::getline(answers >> std::ws, text);) {
        if (commandLine.find(text) != std::string::npos) {
            return code;
        }
    }
    return 0;
}

}  // namespace

int main() {
    const std::string commandLine = GetCommandLineA();
    std::ofstream("C:\\netsh\\calls.txt", std::ios::app) << commandLine << '\n';
    return FindAnswer(commandLine);
}
