// Sends traps to UDP 162 of this machine and watches the receiver's socket buffer from outside, in the
// system's table of sockets: how full it is and how many datagrams it has lost.
//
// trap_storm keep-busy COUNT BINDINGS HIGH_MARK
//   Sends COUNT traps as fast as the receiver takes them: pauses while its buffer holds more than HIGH_MARK
//   octets, so it never runs dry and never overflows. Ends when the buffer is empty again. The rate is the
//   receiver's own.
// trap_storm burst COUNT BINDINGS
//   Sends COUNT traps without a pause and waits until the buffer is empty.
// trap_storm fill BINDINGS
//   Sends until the first one is lost: for a receiver that was stopped. Does not wait.
// trap_storm paced COUNT BINDINGS RATE
//   Sends COUNT traps at RATE a second, in portions of a millisecond, and waits until the buffer is empty.
//
// Prints "sent lost seconds", seconds from the first trap to the empty buffer.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/bench_messages.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint16_t kTrapPort = 162;
constexpr size_t kPortion = 32;  // datagrams a system call

struct BufferState {
    uint64_t waiting = 0;  // octets as the system counts them, its own overhead included
    uint64_t lost = 0;
};

// A line is "sl local remote state tx:rx ..." in hexadecimal, with the datagrams lost as its last number.
BufferState ReadBufferState() {
    std::ifstream table("/proc/net/udp");
    std::string line;
    while (std::getline(table, line)) {
        unsigned port = 0;
        unsigned long waiting = 0;
        if (std::sscanf(line.c_str(), " %*u: %*8x:%4x %*8x:%*4x %*x %*x:%lx", &port, &waiting) == 2 &&
            port == kTrapPort) {
            line.erase(line.find_last_not_of(' ') + 1);
            return {waiting, std::strtoull(line.c_str() + line.rfind(' '), nullptr, 10)};
        }
    }
    std::fputs("Nobody listens on UDP 162.\n", stderr);
    std::exit(1);
}

class Sender {
  public:
    explicit Sender(size_t bindings) : trap_(MakeTrap(bindings)) {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_port = htons(kTrapPort);
        target.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(descriptor_, reinterpret_cast<const sockaddr*>(&target), sizeof target) != 0) {
            std::perror("connect");
            std::exit(1);
        }
        for (mmsghdr& message : messages_) {
            message.msg_hdr.msg_iov = &octets_;
            message.msg_hdr.msg_iovlen = 1;
        }
    }

    void Send(size_t count) {
        while (count > 0) {
            const int sent =
                sendmmsg(descriptor_, messages_, static_cast<unsigned>(std::min(count, kPortion)), 0);
            if (sent < 0) {
                std::perror("sendmmsg");
                std::exit(1);
            }
            count -= static_cast<size_t>(sent);
            sent_ += static_cast<size_t>(sent);
        }
    }

    size_t sent() const { return sent_; }

  private:
    Octets trap_;
    iovec octets_{trap_.data(), trap_.size()};
    mmsghdr messages_[kPortion]{};
    int descriptor_ = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    size_t sent_ = 0;
};

void WaitWhileMoreThan(uint64_t octets) {
    while (ReadBufferState().waiting > octets) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

void KeepBusy(Sender& sender, size_t count, uint64_t highMark) {
    constexpr size_t kBetweenLooks = 8 * kPortion;
    while (sender.sent() < count) {
        sender.Send(std::min(kBetweenLooks, count - sender.sent()));
        WaitWhileMoreThan(highMark);
    }
}

void Fill(Sender& sender, uint64_t lostBefore) {
    while (ReadBufferState().lost == lostBefore) {
        sender.Send(1);
    }
}

void SendPaced(Sender& sender, size_t count, double rate) {
    const Clock::time_point start = Clock::now();
    while (sender.sent() < count) {
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        const size_t due = std::min(count, static_cast<size_t>(elapsed.count() * rate) + 1);
        if (due > sender.sent()) {
            sender.Send(due - sender.sent());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> words(argv + 1, argv + argc);
    const auto number = [&](size_t place) -> size_t {
        return place < words.size() ? std::strtoull(words[place].data(), nullptr, 10) : 0;
    };
    if (words.size() < 2) {
        std::fputs("usage: trap_storm keep-busy|burst|fill|paced NUMBERS; see the source\n", stderr);
        return 2;
    }
    Sender sender(words[0] == "fill" ? number(1) : number(2));
    const uint64_t lostBefore = ReadBufferState().lost;
    const Clock::time_point start = Clock::now();
    if (words[0] == "fill") {
        Fill(sender, lostBefore);
    } else {
        if (words[0] == "keep-busy") {
            KeepBusy(sender, number(1), number(3));
        } else if (words[0] == "burst") {
            sender.Send(number(1));
        } else {
            SendPaced(sender, number(1), static_cast<double>(number(3)));
        }
        WaitWhileMoreThan(0);
    }
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    std::printf("%zu %llu %.6f\n", sender.sent(),
                static_cast<unsigned long long>(ReadBufferState().lost - lostBefore), elapsed.count());
    return 0;
}
