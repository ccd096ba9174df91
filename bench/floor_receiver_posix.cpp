// Floors for a receiver, natively; they end when they are killed.
// Usage: floor_receiver [FOLDER RECORD_OCTETS LINE_OCTETS].
//
// With its arguments the least that one can do that writes each trap by itself: take a datagram from UDP 162,
// append a block of octets to each of two files, opening and closing each. Without them the least that any
// can do: take it. Nothing is decoded; what Quillmont needs beyond these programs' time is Quillmont's own.
#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int kReceiveBuffer = 8 * 1024 * 1024;
constexpr uint16_t kTrapPort = 162;

int BindTrapSocket() {
    const int descriptor = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kTrapPort);
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        std::perror("bind");
        std::exit(1);
    }
    return descriptor;
}

void Append(const std::string& path, const std::string& octets) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (write(descriptor, octets.data(), octets.size()) < 0) {
        std::perror("write");
    }
    close(descriptor);
}

std::string MakeBlock(const char* size) {
    return std::string(std::strtoul(size, nullptr, 10) - 1, '.') + '\n';
}

template <typename Handler>
[[noreturn]] void ReceiveForever(Handler handle) {
    const int descriptor = BindTrapSocket();
    std::vector<char> buffer(65535);
    for (;;) {
        sockaddr_in sender{};
        socklen_t senderSize = sizeof sender;
        if (recvfrom(descriptor, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&sender),
                     &senderSize) >= 0) {
            handle();
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        ReceiveForever([] {});
    }
    if (argc != 4) {
        std::fputs("usage: floor_receiver [FOLDER RECORD_OCTETS LINE_OCTETS]\n", stderr);
        return 2;
    }
    const std::string folder = argv[1];
    const std::string trapFile = folder + "/SNMP.txt";
    const std::string logFile = folder + "/log.txt";
    const std::string record = MakeBlock(argv[2]);
    const std::string line = MakeBlock(argv[3]);
    ReceiveForever([&] {
        Append(trapFile, record);
        Append(logFile, line);
    });
}
