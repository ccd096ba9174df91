// A hash table from text to a small value, made for tables that one load fills and that are only read from then
// on: keys are references into the text pool, rows lie densely in the order in which their keys were first
// stored, and what is probed is an array of row numbers beside the hashes. std::unordered_map would take three
// times the memory for its nodes and strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "mib/text_pool.h"

// A key with its hash, so that asking two tables for one name hashes it once.
struct TextKey {
    TextKey(std::wstring_view keyText) : text(keyText), hash(HashText(keyText)) {}
    TextKey(const wchar_t* keyText) : TextKey(std::wstring_view(keyText)) {}

    static uint32_t HashText(std::wstring_view keyText) {
        const uint64_t wide = std::hash<std::wstring_view>{}(keyText);
        return static_cast<uint32_t>(wide ^ (wide >> 32));
    }

    std::wstring_view text;
    uint32_t hash;
};

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
        for (size_t place = FirstPlace(key.hash); slots_[place].row != kFree; place = NextPlace(place)) {
            if (slots_[place].hash == key.hash && rows_[slots_[place].row].key.View() == key.text) {
                return &rows_[slots_[place].row];
            }
        }
        return nullptr;
    }
    Row* Find(const TextKey& key) { return const_cast<Row*>(std::as_const(*this).Find(key)); }

    // Adds a row; `kept` is the key's text in the pool. No row may have that key yet. When memory runs out
    // (std::bad_alloc) the table is as before.
    void Add(const TextKey& key, PooledText kept, const Value& value) {
        if ((rows_.size() + 1) * 4 > slots_.size() * 3) {
            SetSlotCount(slots_.empty() ? kFirstSlotCount : slots_.size() * 2);
        }
        rows_.push_back({kept, value});
        TakeSlot({static_cast<uint32_t>(rows_.size() - 1), key.hash});
    }

    size_t Count() const { return rows_.size(); }

    // In the order in which the keys were first stored.
    const std::vector<Row>& Rows() const { return rows_; }

    // Calls `visit` with the place in Rows() of each row, in the order of the hashes, which is no order that
    // whoever chose the keys had in mind.
    template <typename Visit>
    void VisitByHash(Visit visit) const {
        for (const Slot& slot : slots_) {
            if (slot.row != kFree) {
                visit(size_t{slot.row});
            }
        }
    }

    // Gives back what was set aside for rows that did not come.
    void Trim() { rows_.shrink_to_fit(); }

    // Empties the table and gives its memory back.
    void Clear() { *this = TextTable(); }

  private:
    static constexpr uint32_t kFree = 0xFFFFFFFF;
    static constexpr size_t kFirstSlotCount = 16;  // counts are powers of two

    struct Slot {
        uint32_t row = kFree;
        uint32_t hash = 0;
    };

    size_t FirstPlace(uint32_t hash) const { return hash & (slots_.size() - 1); }
    size_t NextPlace(size_t place) const { return (place + 1) & (slots_.size() - 1); }

    void TakeSlot(const Slot& slot) {
        size_t place = FirstPlace(slot.hash);
        while (slots_[place].row != kFree) {
            place = NextPlace(place);
        }
        slots_[place] = slot;
    }

    void SetSlotCount(size_t count) {
        std::vector<Slot> old(count);
        slots_.swap(old);
        for (const Slot& slot : old) {
            if (slot.row != kFree) {
                TakeSlot(slot);
            }
        }
    }

    std::vector<Row> rows_;
    std::vector<Slot> slots_;
};
