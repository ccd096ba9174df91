// The datagrams of one turn on UDP 162, as they arrived.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platform/clock.h"
#include "platform/udp_socket.h"
#include "trap/receive_loop.h"

struct TrapArrival {
    const uint8_t* octets = nullptr;
    size_t count = 0;  // 0 included
    Ipv4Endpoint sender;
    LocalTime time;         // the stamp of its record
    bool recorded = false;  // set on the way by RecordTraps
};

// Holds octets and arrivals inside itself: whoever has one on its stack needs no memory to receive.
class TrapTurn : public ReceiveTurn {
  public:
    static constexpr size_t kLargestDatagram = 65535;
    static constexpr size_t kMostArrivals = 256;

    // Room for the largest datagram as long as less than 64 KB are taken and fewer than kMostArrivals.
    std::span<uint8_t> Room() override;

    // Notes the arrival: its time, and ServerState.lastTrapTick and lastTrapSender. The latter may throw
    // std::bad_alloc and leave the status window with an older sender; the arrival counts all the same.
    void Take(size_t count, const Ipv4Endpoint& sender) override;

    void Clear() override;

    std::span<TrapArrival> arrivals() { return std::span(arrivals_).first(arrivalCount_); }

  private:
    std::array<uint8_t, 2 * kLargestDatagram> octets_;
    size_t octetCount_ = 0;
    std::array<TrapArrival, kMostArrivals> arrivals_;
    size_t arrivalCount_ = 0;
    std::wstring senderText_;  // kept for its memory
};
