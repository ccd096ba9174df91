// Sends numbered traps to this machine, back to back or at a steady rate, and prints how many seconds it
// took. Usage: quillmont_storm_sender COUNT [RATE [PORT]]: RATE in traps a second, 0 for back to back.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/udp_socket.h"
#include "tests/support/ber_encoder.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t kLoopback = 0x7F000001;

// Built before the first is sent; a longer run begins again with number 0.
constexpr uint32_t kDistinctTraps = 100000;

// A linkDown as a switch sends it: five bindings, the first of them our number.
Octets BuildTrap(uint32_t number) {
    return EncodeV2Trap({{"1.3.6.1.4.1.9999.1", EncodeUnsigned(ber::kGauge32, number)},
                         {"1.3.6.1.6.3.1.1.4.1.0", EncodeOid("1.3.6.1.6.3.1.1.5.3")},
                         {"1.3.6.1.2.1.2.2.1.1.7", EncodeInteger(7)},
                         {"1.3.6.1.2.1.2.2.1.7.7", EncodeInteger(1)},
                         {"1.3.6.1.2.1.2.2.1.2.7", EncodeOctetString("GigabitEthernet0/7")}});
}

std::vector<Octets> BuildTraps(uint32_t count) {
    std::vector<Octets> traps;
    traps.reserve(count);
    for (uint32_t number = 0; number < count; ++number) {
        traps.push_back(BuildTrap(number));
    }
    return traps;
}

// Sleeps in steps of a millisecond or more, so a rate is kept in small portions.
void WaitForTurn(Clock::time_point start, uint32_t number, uint32_t rate) {
    const auto turn = start + std::chrono::microseconds(uint64_t{number} * 1000000 / rate);
    if (turn > Clock::now() + std::chrono::milliseconds(1)) {
        std::this_thread::sleep_until(turn);
    }
}

uint32_t NumberArgument(int count, char** arguments, int index, uint32_t fallback) {
    return index < count ? static_cast<uint32_t>(std::strtoul(arguments[index], nullptr, 10)) : fallback;
}

}  // namespace

int main(int count, char** arguments) {
    const uint32_t traps = NumberArgument(count, arguments, 1, 1000);
    const uint32_t rate = NumberArgument(count, arguments, 2, 0);
    const Ipv4Endpoint target{kLoopback, static_cast<uint16_t>(NumberArgument(count, arguments, 3, 162))};
    StartSocketLibrary();
    const UdpSocketRef socket = OpenUdpSocket();
    if (!socket) {
        return 1;
    }
    const std::vector<Octets> built = BuildTraps(std::min(traps, kDistinctTraps));
    const auto start = Clock::now();
    for (uint32_t number = 0; number < traps; ++number) {
        if (rate > 0) {
            WaitForTurn(start, number, rate);
        }
        const Octets& trap = built[number % kDistinctTraps];
        if (SendDatagram(*socket, target, trap.data(), trap.size()) != SendResult::Sent) {
            return 1;
        }
    }
    std::printf("%.6f\n", std::chrono::duration<double>(Clock::now() - start).count());
    CloseUdpSocket(*socket);
    StopSocketLibrary();
    return 0;
}
