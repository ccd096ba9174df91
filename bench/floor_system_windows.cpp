#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "bench/floor_system.h"
#include "platform/windows/windows_headers.h"

namespace {

constexpr uint16_t kTrapPort = 162;
SOCKET trapSocket = INVALID_SOCKET;
std::wstring trapFile;
std::wstring logFile;

void Append(const std::wstring& path, const std::string& octets) {
    const HANDLE file =
        CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, octets.data(), static_cast<DWORD>(octets.size()), &written, nullptr);
    CloseHandle(file);
}

}  // namespace

void BindTrapSocket() {
    WSADATA library{};
    WSAStartup(MAKEWORD(2, 2), &library);
    trapSocket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    setsockopt(trapSocket, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&kReceiveBuffer),
               sizeof kReceiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kTrapPort);
    if (bind(trapSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        std::fprintf(stderr, "bind: error %d\n", WSAGetLastError());
        std::exit(1);
    }
}

bool ReceiveDatagram(std::vector<char>& buffer) {
    sockaddr_in sender{};
    int senderSize = sizeof sender;
    return recvfrom(trapSocket, buffer.data(), static_cast<int>(buffer.size()), 0,
                    reinterpret_cast<sockaddr*>(&sender), &senderSize) >= 0;
}

void UseFolder(const std::string& folder) {
    const std::wstring wide(folder.begin(), folder.end());
    trapFile = wide + L"\\SNMP.txt";
    logFile = wide + L"\\log.txt";
}

void AppendBlocks(const std::string& record, const std::string& line) {
    Append(trapFile, record);
    Append(logFile, line);
}
