#include "bench/load/trap_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "bench/bench_messages.h"

namespace {

[[noreturn]] void EndWithSystemError(const char* what) {
    std::perror(what);
    std::exit(1);
}

ScopedDescriptor ConnectToLoopback(uint16_t port) {
    ScopedDescriptor descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    target.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&target), sizeof target) != 0) {
        EndWithSystemError("connect");
    }
    return descriptor;
}

size_t FindSampleTicks(const Octets& trap) {
    const Octets ticks = EncodeUnsigned(ber::kTimeTicks, kSampleTicks);
    const auto found = std::search(trap.begin(), trap.end(), ticks.begin(), ticks.end());
    return static_cast<size_t>(found - trap.begin()) + ticks.size() - sizeof kSampleTicks;
}

}  // namespace

TrapStream::TrapStream(uint16_t port, size_t bindings, uint32_t firstNumber)
    : nextNumber_(firstNumber), socket_(ConnectToLoopback(port)) {
    traps_.fill(MakeTrap(bindings));
    numberOffset_ = FindSampleTicks(traps_[0]);
    for (size_t index = 0; index < kBatchSize; ++index) {
        octets_[index] = {traps_[index].data(), traps_[index].size()};
        messages_[index].msg_hdr.msg_iov = &octets_[index];
        messages_[index].msg_hdr.msg_iovlen = 1;
    }
}

void TrapStream::NumberBatch(size_t count) {
    for (size_t index = 0; index < count; ++index) {
        const uint32_t number = htonl(nextNumber_ + static_cast<uint32_t>(index));
        std::copy_n(reinterpret_cast<const uint8_t*>(&number), sizeof number,
                    traps_[index].data() + numberOffset_);
    }
}

void TrapStream::Send(size_t count) {
    while (count > 0) {
        const size_t batch = std::min(count, kBatchSize);
        NumberBatch(batch);
        const int accepted = sendmmsg(socket_.get(), messages_.data(), static_cast<unsigned>(batch), 0);
        // ECONNREFUSED reports that an earlier trap had no listener; this batch was not sent yet.
        if (accepted < 0 && errno != ECONNREFUSED) {
            EndWithSystemError("sendmmsg");
        }
        const size_t sent = static_cast<size_t>(std::max(accepted, 0));
        count -= sent;
        sent_ += sent;
        nextNumber_ += static_cast<uint32_t>(sent);
    }
}
