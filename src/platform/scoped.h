// Owns one handle of the system and closes it at the end of the scope.
#pragma once

#include <utility>

// `Kind` describes the handle: its type `Value`, `kNone` for no handle, `IsOpen(Value)`, and `Close(Value)`,
// which is called once for each value that is open.
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

    // Closes the owned handle, if any, and owns `value` from now on.
    void Reset(Value value = Kind::kNone) {
        const Value former = std::exchange(value_, value);
        if (Kind::IsOpen(former)) {
            Kind::Close(former);
        }
    }

  private:
    Value value_;
};
