// A batch of datagrams from UDP 162.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "trap/receive_loop.h"
#include "trap/trap_processing.h"

// Contains its buffers, so receiving allocates no memory. Trap thread only.
class TrapBatch : public ReceiveBatch {
  public:
    static constexpr size_t kMaxDatagramSize = 65535;
    static constexpr size_t kMaxArrivals = 256;

    // `forwardSocket` must outlive the batch. Null: nothing is forwarded.
    explicit TrapBatch(UdpSocket* forwardSocket) : forwardSocket_(forwardSocket) {}

    // Returns at least kMaxDatagramSize octets. Empty if fewer are left or the batch has kMaxArrivals
    // datagrams.
    std::span<uint8_t> FreeSpace() override;

    // Also stores the time of arrival.
    void AddArrival(size_t count, const Ipv4Endpoint& sender) override;

    void Process() override;

    std::span<const TrapArrival> arrivals() const { return std::span(arrivals_).first(arrivalCount_); }

  private:
    std::array<uint8_t, 2 * kMaxDatagramSize> octets_;
    size_t octetCount_ = 0;
    std::array<TrapArrival, kMaxArrivals> arrivals_;
    size_t arrivalCount_ = 0;
    UdpSocket* forwardSocket_;
};

// The batch is on the trap thread's stack. QUILLMONT_COMMITTED_STACK octets of that stack are committed from
// the start (see src/CMakeLists.txt), so using the batch cannot fail; a quarter is left for the calls.
static_assert(sizeof(TrapBatch) <= QUILLMONT_COMMITTED_STACK * 3 / 4);
