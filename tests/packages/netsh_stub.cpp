// Stands in for netsh.exe while Setup is tried: appends each command line to C:\netsh\calls.txt, and answers
// with the exit code that the first fitting line of C:\netsh\answers.txt gives ("1 delete rule"), or with 0.
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
