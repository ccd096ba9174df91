// Owns one system handle and closes it at scope exit.
#pragma once

#include <utility>

// `Kind` describes the handle: its type `Value`, the value `kNone` for no handle, `IsOpen(Value)`, and
// `Close(Value)`, which is called once for each open value.
template <typename Kind>
class Scoped {
  public:
    using Value = typename Kind::Value;

    explicit Scoped(Value value = Kind::kNone) : value_(value) {}
    Scoped(Scoped&& other) noexcept : value_(std::exchange(other.value_, Kind::kNone)) {}
    Scoped& operator=(Scoped&&) = delete;
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;
    ~Scoped() { Reset(); }

    Value get() const { return value_; }
    explicit operator bool() const { return Kind::IsOpen(value_); }

    // Closes the owned handle, if any, and then owns `value`.
    void Reset(Value value = Kind::kNone) {
        const Value former = std::exchange(value_, value);
        if (Kind::IsOpen(former)) {
            Kind::Close(former);
        }
    }

  private:
    Value value_;
};
