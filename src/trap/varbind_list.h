// The rendered variable bindings of one message.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct VarbindRecord {
    std::wstring oid;    // dotted decimal, empty for an identifier without content
    std::wstring name;   // what the name store holds for exactly that identifier, or empty
    std::wstring type;   // type label of the value, or "(no value)"
    std::wstring value;  // rendered value, or empty
};

// A sequence that is emptied and refilled for every datagram: emptying keeps the records' memory, so that a
// storm of ordinary traps allocates nothing.
class VarbindList {
  public:
    size_t size() const { return count_; }
    bool empty() const { return count_ == 0; }
    const VarbindRecord& operator[](size_t index) const { return records_[index]; }
    const VarbindRecord* begin() const { return records_.data(); }
    const VarbindRecord* end() const { return records_.data() + count_; }

    void Clear() { count_ = 0; }

    // The new last record. Its texts hold leftovers of an earlier one: the caller replaces all four.
    VarbindRecord& Append() {
        if (count_ == records_.size()) {
            records_.emplace_back();
        }
        return records_[count_++];
    }

    // Empties the list and gives its memory back.
    void Release() {
        count_ = 0;
        std::vector<VarbindRecord>().swap(records_);
    }

  private:
    std::vector<VarbindRecord> records_;  // the first count_ are in use
    size_t count_ = 0;
};
