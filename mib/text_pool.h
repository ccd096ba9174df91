// The texts of the MIB tables, each stored once. A name is wanted by up to three tables and a load stores some
// hundred thousand of them, so the tables hold four-octet references instead of strings of their own.
#pragma once

#include <cstdint>
#include <string_view>

// A text of the pool, valid until the pool is cleared. The default is the empty text.
struct PooledText {
    uint32_t position = 0;  // of its length in the pool, in wide characters; 0: empty

    // Stays where it is however much is added to the pool. Caller holds MibStoreLock.
    std::wstring_view View() const;
};

// Adds a copy of `text`. Linear in its length; throws std::bad_alloc when memory or the four octets of a
// reference do not suffice. Caller holds MibStoreLock.
PooledText KeepText(std::wstring_view text);

// Forgets every text and gives the memory back. Caller holds MibStoreLock and has cleared the tables.
void ClearTextPool();
