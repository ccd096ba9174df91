// Floors for a receiver on Windows; they end when they are killed.
// Usage: floor_receiver.exe [FOLDER RECORD_OCTETS LINE_OCTETS].
//
// With its arguments the least that one can do that writes each trap by itself: take a datagram from UDP 162
// with a receive call that blocks, append a block of octets to each of two files, opening and closing each.
// Without them the least that any can do: take it. Nothing is decoded; what Quillmont needs beyond these
// programs' time is Quillmont's own.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/floor_window.h"
#include "platform/windows/windows_headers.h"

namespace {

constexpr int kReceiveBuffer = 8 * 1024 * 1024;
constexpr uint16_t kTrapPort = 162;

SOCKET BindTrapSocket() {
    WSADATA library{};
    WSAStartup(MAKEWORD(2, 2), &library);
    const SOCKET handle = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    setsockopt(handle, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&kReceiveBuffer),
               sizeof kReceiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kTrapPort);
    if (bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        std::fprintf(stderr, "bind: error %d\n", WSAGetLastError());
        std::exit(1);
    }
    return handle;
}

void Append(const std::wstring& path, const std::string& octets) {
    const HANDLE file =
        CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, octets.data(), static_cast<DWORD>(octets.size()), &written, nullptr);
    CloseHandle(file);
}

std::string MakeBlock(const char* size) {
    return std::string(std::strtoul(size, nullptr, 10) - 1, '.') + '\n';
}

template <typename Handler>
[[noreturn]] void ReceiveForever(Handler handle) {
    const SOCKET socket = BindTrapSocket();
    std::vector<char> buffer(65535);
    for (;;) {
        sockaddr_in sender{};
        int senderSize = sizeof sender;
        if (recvfrom(socket, buffer.data(), static_cast<int>(buffer.size()), 0,
                     reinterpret_cast<sockaddr*>(&sender), &senderSize) >= 0) {
            handle();
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    ShowEmptyWindow();
    if (argc == 1) {
        ReceiveForever([] {});
    }
    if (argc != 4) {
        std::fputs("usage: floor_receiver [FOLDER RECORD_OCTETS LINE_OCTETS]\n", stderr);
        return 2;
    }
    const std::string narrowFolder = argv[1];
    const std::wstring folder(narrowFolder.begin(), narrowFolder.end());
    const std::wstring trapFile = folder + L"\\SNMP.txt";
    const std::wstring logFile = folder + L"\\log.txt";
    const std::string record = MakeBlock(argv[2]);
    const std::string line = MakeBlock(argv[3]);
    ReceiveForever([&] {
        Append(trapFile, record);
        Append(logFile, line);
    });
}
