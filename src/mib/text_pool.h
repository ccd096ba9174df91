// The texts of the MIB tables, each stored once. A name is wanted by up to three tables and a load stores
// some hundred thousand of them, so the tables hold references of four octets instead of strings of their
// own. A text keeps its hash beside it: hashing again for each table, and whenever one grows, would be a
// tenth of a load.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// Refers to a text of the pool, until the pool is cleared. The default refers to the empty text.
struct PooledText {
    uint32_t reference = 0;  // 0: the empty text; else one more than where it stands in the pool

    // The characters stay where they are however much is added. Caller holds MibStoreLock.
    std::wstring_view View() const;
};

// A text with its hash, so that asking two tables for one name hashes it once.
struct TextKey {
    TextKey(std::wstring_view keyText) : text(keyText), hash(HashText(keyText)) {}
    TextKey(const std::wstring& keyText) : TextKey(std::wstring_view(keyText)) {}
    TextKey(const wchar_t* keyText) : TextKey(std::wstring_view(keyText)) {}
    TextKey(PooledText kept);  // caller holds MibStoreLock

    std::wstring_view text;
    uint32_t hash;

  private:
    static uint32_t HashText(std::wstring_view keyText) {
        const uint64_t wide = std::hash<std::wstring_view>{}(keyText);
        return static_cast<uint32_t>(wide ^ (wide >> 32));
    }
};

// Adds a copy of the text; it may itself stand in the pool. Throws std::bad_alloc when memory or the range of
// a reference is used up, and has added nothing then. Caller holds MibStoreLock.
PooledText KeepText(const TextKey& key);

// Forgets every text and gives the memory back. Caller holds MibStoreLock and has emptied the tables.
void ClearTextPool();
