// The datagrams that were received together on UDP 162.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "trap/receive_loop.h"
#include "trap/trap_processing.h"

// Stores octets and arrivals inside itself: a thread that has it on its stack needs no memory to receive.
class TrapBatch : public ReceiveBatch {
  public:
    static constexpr size_t kLargestDatagram = 65535;
    static constexpr size_t kMostArrivals = 256;

    // Traps are forwarded through `forwardSocket`, which outlives the batch; null: nothing is forwarded.
    explicit TrapBatch(UdpSocket* forwardSocket) : forwardSocket_(forwardSocket) {}

    // Room for the largest datagram, unless 64 KB are in use or there are kMostArrivals.
    std::span<uint8_t> Room() override;

    // Notes the time of arrival, and sets ServerState.lastTrapTick and lastTrapSender.
    void AddArrival(size_t count, const Ipv4Endpoint& sender) override;

    void Process() override;

    std::span<const TrapArrival> arrivals() const { return std::span(arrivals_).first(arrivalCount_); }

  private:
    std::array<uint8_t, 2 * kLargestDatagram> octets_;
    size_t octetCount_ = 0;
    std::array<TrapArrival, kMostArrivals> arrivals_;
    size_t arrivalCount_ = 0;
    UdpSocket* forwardSocket_;
};

// The trap thread has the batch on its stack, of which the system guarantees this much
// (see src/CMakeLists.txt).
static_assert(sizeof(TrapBatch) <= QUILLMONT_COMMITTED_STACK * 3 / 4);
