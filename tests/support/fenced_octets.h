// A copy of some octets that ends at the end of its allocation, so that AddressSanitizer detects a read past
// its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

class FencedOctets {
  public:
    // With an extra octet at the start: an allocation of 0 octets would have no fence.
    FencedOctets(const uint8_t* octets, size_t size) : memory_(new uint8_t[size + 1]), size_(size) {
        std::copy(octets, octets + size, memory_.get() + 1);
    }

    explicit FencedOctets(std::string_view octets)
        : FencedOctets(reinterpret_cast<const uint8_t*>(octets.data()), octets.size()) {}

    const uint8_t* data() const { return memory_.get() + 1; }
    size_t size() const { return size_; }
    const uint8_t* end() const { return data() + size_; }
    std::string_view AsText() const { return {reinterpret_cast<const char*>(data()), size_}; }

  private:
    std::unique_ptr<uint8_t[]> memory_;
    size_t size_;
};
