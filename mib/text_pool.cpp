// Blocks of equal size that never move; a text stands within one of them, behind its length. A text too long
// for that gets memory of its own that counts as several blocks.
#include "mib/text_pool.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr uint32_t kBlockBits = 16;
constexpr size_t kBlockCharacters = size_t{1} << kBlockBits;
constexpr size_t kMaxBlocks = (size_t{1} << (32 - kBlockBits)) - 1;

using TextLength = uint32_t;
constexpr size_t kLengthCharacters = sizeof(TextLength) / sizeof(wchar_t);

struct TextPoolFields {
    std::vector<std::unique_ptr<wchar_t[]>> memory;
    std::vector<wchar_t*> blocks;
    size_t used = kBlockCharacters;  // characters of the last block
};
TextPoolFields TextPool;  // under MibStoreLock

size_t CountBlocks(size_t characters) {
    return (characters + kBlockCharacters - 1) >> kBlockBits;
}

// The memory enters its list first: if the second list cannot grow, nothing points to memory that is gone.
void AddBlocks(size_t count) {
    if (count > kMaxBlocks - TextPool.blocks.size()) {
        throw std::bad_alloc();
    }
    TextPool.memory.push_back(std::make_unique_for_overwrite<wchar_t[]>(count << kBlockBits));
    wchar_t* block = TextPool.memory.back().get();
    for (; count > 0; --count, block += kBlockCharacters) {
        TextPool.blocks.push_back(block);
    }
}

// The position of `characters` adjoining places, now taken.
size_t TakePlaces(size_t characters) {
    if (characters <= kBlockCharacters - TextPool.used) {
        const size_t position = ((TextPool.blocks.size() - 1) << kBlockBits) + TextPool.used;
        TextPool.used += characters;
        return position;
    }
    const size_t position = TextPool.blocks.size() << kBlockBits;
    const size_t count = CountBlocks(characters);
    AddBlocks(count);
    TextPool.used = characters - ((count - 1) << kBlockBits);
    return position;
}

wchar_t* FindPlace(size_t position) {
    return TextPool.blocks[position >> kBlockBits] + (position & (kBlockCharacters - 1));
}

}  // namespace

std::wstring_view PooledText::View() const {
    if (reference == 0) {
        return {};
    }
    const wchar_t* place = FindPlace(reference - 1);
    TextLength length = 0;
    std::memcpy(&length, place, sizeof length);
    return {place + kLengthCharacters, length};
}

PooledText KeepText(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const size_t position = TakePlaces(kLengthCharacters + text.size());
    const auto length = static_cast<TextLength>(text.size());
    wchar_t* place = FindPlace(position);
    std::memcpy(place, &length, sizeof length);
    std::copy(text.begin(), text.end(), place + kLengthCharacters);
    return {static_cast<uint32_t>(position + 1)};
}

void ClearTextPool() {
    TextPool = {};
}
