// Blocks of equal size that never move; a text stands within one of them, behind its length and hash. A text
// too long for that gets memory of its own that counts as several blocks.
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

struct TextHead {
    uint32_t length;
    uint32_t hash;
};
constexpr size_t kHeadCharacters = sizeof(TextHead) / sizeof(wchar_t);

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

TextHead ReadHead(const wchar_t* place) {
    TextHead head{};
    std::memcpy(&head, place, sizeof head);
    return head;
}

}  // namespace

std::wstring_view PooledText::View() const {
    if (reference == 0) {
        return {};
    }
    const wchar_t* place = FindPlace(reference - 1);
    return {place + kHeadCharacters, ReadHead(place).length};
}

TextKey::TextKey(PooledText kept)
    : text(kept.View()),
      hash(kept.reference == 0 ? HashText({}) : ReadHead(FindPlace(kept.reference - 1)).hash) {}

PooledText KeepText(const TextKey& key) {
    if (key.text.empty()) {
        return {};
    }
    const size_t position = TakePlaces(kHeadCharacters + key.text.size());
    const TextHead head = {static_cast<uint32_t>(key.text.size()), key.hash};
    wchar_t* place = FindPlace(position);
    std::memcpy(place, &head, sizeof head);
    std::copy(key.text.begin(), key.text.end(), place + kHeadCharacters);
    return {static_cast<uint32_t>(position + 1)};
}

void ClearTextPool() {
    TextPool = {};
}
