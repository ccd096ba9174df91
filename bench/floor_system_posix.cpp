#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "bench/floor_system.h"

namespace {

constexpr uint16_t kTrapPort = 162;
int trapSocket = -1;
std::string trapFile;
std::string logFile;

void Append(const std::string& path, const std::string& octets) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (write(descriptor, octets.data(), octets.size()) < 0) {
        std::perror("write");
    }
    close(descriptor);
}

}  // namespace

void BindTrapSocket() {
    trapSocket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    setsockopt(trapSocket, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kTrapPort);
    if (bind(trapSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        std::perror("bind");
        std::exit(1);
    }
}

bool ReceiveDatagram(std::vector<char>& buffer) {
    sockaddr_in sender{};
    socklen_t senderSize = sizeof sender;
    return recvfrom(trapSocket, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&sender),
                    &senderSize) >= 0;
}

void UseFolder(const std::string& folder) {
    trapFile = folder + "/SNMP.txt";
    logFile = folder + "/log.txt";
}

void AppendBlocks(const std::string& record, const std::string& line) {
    Append(trapFile, record);
    Append(logFile, line);
}
