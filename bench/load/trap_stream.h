// Sends numbered traps to this machine, so that the records can be compared with the traps. Linux.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/posix/scoped_descriptor.h"
#include "tests/support/ber_encoder.h"

constexpr uint16_t kTrapPort = 162;

// Ends the program if a socket cannot be opened.
class TrapStream {
  public:
    // Traps of `bindings` bindings (two or more) to `port` of 127.0.0.1. The number is the value of the first
    // binding, sysUpTime.0, and grows by one with each trap.
    TrapStream(uint16_t port, size_t bindings, uint32_t firstNumber);
    TrapStream(const TrapStream&) = delete;  // the messages point into the object
    TrapStream& operator=(const TrapStream&) = delete;

    // Sends the next `count` back to back. A trap to a port without a listener counts as sent.
    void Send(size_t count);

    size_t sent() const { return sent_; }

  private:
    static constexpr size_t kBatchSize = 32;  // traps for each system call

    void NumberBatch(size_t count);

    std::array<Octets, kBatchSize> traps_;
    std::array<iovec, kBatchSize> octets_{};
    std::array<mmsghdr, kBatchSize> messages_{};
    size_t numberOffset_ = 0;
    uint32_t nextNumber_;
    ScopedDescriptor socket_;
    size_t sent_ = 0;
};
