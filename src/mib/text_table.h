// A hash table from text to a small value, made for tables that one load fills and that are only read from
// then on: keys are references into the text pool, rows lie densely in the order in which their keys were
// first stored, and what is probed is an array of four octets a slot. std::unordered_map would take three
// times the memory for its nodes and strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "mib/text_pool.h"

// Guarded like the pool: callers hold MibStoreLock.
template <typename Value>
class TextTable {
  public:
    struct Row {
        PooledText key;
        Value value;
    };

    // Null: no row has this key. The row stays where it is until the next Add, Trim or Clear.
    const Row* Find(const TextKey& key) const {
        if (slots_.empty()) {
            return nullptr;
        }
        for (uint32_t place = key.hash & Mask(); slots_[place] != kFree; place = (place + 1) & Mask()) {
            const uint32_t slot = slots_[place];
            if (((slot ^ key.hash) & ~Mask()) == 0 && rows_[slot & Mask()].key.View() == key.text) {
                return &rows_[slot & Mask()];
            }
        }
        return nullptr;
    }
    Row* Find(const TextKey& key) { return const_cast<Row*>(std::as_const(*this).Find(key)); }

    // Adds a row. None may have that key yet. When memory runs out (std::bad_alloc) the table is as before.
    void Add(PooledText key, const Value& value) {
        if ((rows_.size() + 1) * 4 > slots_.size() * 3) {
            SetSlotCount(slots_.empty() ? kFirstSlotCount : slots_.size() * 2);
        }
        rows_.push_back({key, value});
        TakeSlot(TextKey(key).hash, rows_.size() - 1);
    }

    size_t Count() const { return rows_.size(); }

    // In the order in which the keys were first stored.
    const std::vector<Row>& Rows() const { return rows_; }

    // Gives back what was set aside for rows that did not come.
    void Trim() { rows_.shrink_to_fit(); }

    // Empties the table and gives its memory back.
    void Clear() { *this = TextTable(); }

  private:
    // Counts are powers of two. They need no bound: the pool has no references left for so many keys that
    // half of 32 bits would not number their slots.
    static constexpr size_t kFirstSlotCount = 16;

    // A slot holds the number of its row in the low bits, as many as number the slots, and above them the
    // bits of the hash that do not choose the place. At most three quarters of the slots are taken, so no row
    // has a number of all ones.
    static constexpr uint32_t kFree = 0xFFFFFFFF;

    uint32_t Mask() const { return static_cast<uint32_t>(slots_.size() - 1); }

    void TakeSlot(uint32_t hash, size_t row) {
        uint32_t place = hash & Mask();
        while (slots_[place] != kFree) {
            place = (place + 1) & Mask();
        }
        slots_[place] = (hash & ~Mask()) | static_cast<uint32_t>(row);
    }

    void SetSlotCount(size_t count) {
        std::vector<uint32_t>(count, kFree).swap(slots_);
        for (size_t row = 0; row < rows_.size(); ++row) {
            TakeSlot(TextKey(rows_[row].key).hash, row);
        }
    }

    std::vector<Row> rows_;
    std::vector<uint32_t> slots_;
};
