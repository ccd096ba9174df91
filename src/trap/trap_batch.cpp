#include "trap/trap_batch.h"

std::span<uint8_t> TrapBatch::FreeSpace() {
    const std::span<uint8_t> left = std::span(octets_).subspan(octetCount_);
    return arrivalCount_ < kMaxArrivals && left.size() >= kMaxDatagramSize ? left : std::span<uint8_t>();
}

void TrapBatch::AddArrival(size_t count, const Ipv4Endpoint& sender) {
    arrivals_[arrivalCount_++] = {octets_.data() + octetCount_, count, sender, ReadLocalTime()};
    octetCount_ += count;
}

void TrapBatch::Process() {
    ProcessTraps(arrivals(), forwardSocket_);
    octetCount_ = 0;
    arrivalCount_ = 0;
}
