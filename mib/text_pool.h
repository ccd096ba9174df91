// The texts of the MIB tables, each stored once. A name is wanted by up to three tables and a load stores
// some hundred thousand of them, so the tables hold references of four octets instead of strings of their
// own.
#pragma once

#include <cstdint>
#include <string_view>

// Refers to a text of the pool, until the pool is cleared. The default refers to the empty text.
struct PooledText {
    uint32_t reference = 0;  // 0: the empty text; else one more than where it stands in the pool

    // The characters stay where they are however much is added. Caller holds MibStoreLock.
    std::wstring_view View() const;
};

// Adds a copy of `text`; it may itself stand in the pool. Throws std::bad_alloc when memory or the range of a
// reference is used up, and has added nothing then. Caller holds MibStoreLock.
PooledText KeepText(std::wstring_view text);

// Forgets every text and gives the memory back. Caller holds MibStoreLock and has emptied the tables.
void ClearTextPool();
