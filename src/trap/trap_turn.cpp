#include "trap/trap_turn.h"

#include "core/decimal_text.h"
#include "trap/ipv4_text.h"
#include "trap/server_state.h"

std::span<uint8_t> TrapTurn::Room() {
    const std::span<uint8_t> left = std::span(octets_).subspan(octetCount_);
    return arrivalCount_ < kMostArrivals && left.size() >= kLargestDatagram ? left : std::span<uint8_t>();
}

void TrapTurn::Take(size_t count, const Ipv4Endpoint& sender) {
    arrivals_[arrivalCount_++] = {octets_.data() + octetCount_, count, sender, ReadLocalTime()};
    octetCount_ += count;
    ServerState.lastTrapTick.exchange(ReadTickCount());
    senderText_.clear();
    AppendIpv4Text(senderText_, sender.address);
    senderText_.push_back(L':');
    AppendDecimal(senderText_, sender.port);
    ReplaceLastTrapSender(senderText_);
}

void TrapTurn::Clear() {
    octetCount_ = 0;
    arrivalCount_ = 0;
}
