// Blocks of equal size that never move. A text lies within one block behind its length; a text too long for
// that gets a block of its own that counts as several.
#include "mib/text_pool.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr uint32_t kBlockBits = 16;
constexpr size_t kBlockCharacters = size_t{1} << kBlockBits;
constexpr size_t kMaxBlocks = size_t{1} << (32 - kBlockBits);

using TextLength = uint32_t;
constexpr size_t kLengthCharacters = sizeof(TextLength) / sizeof(wchar_t);

struct TextPoolFields {
    std::vector<std::unique_ptr<wchar_t[]>> memory;
    std::vector<wchar_t*> blocks;     // what the upper half of a position selects
    size_t used = kBlockCharacters;   // of the last block
};
TextPoolFields TextPool;  // under MibStoreLock

// Makes room for `characters` in one piece at the start of a new block.
void AddBlock(size_t characters) {
    const size_t blocks = (characters + kBlockCharacters - 1) >> kBlockBits;
    if (blocks > kMaxBlocks - TextPool.blocks.size()) {
        throw std::bad_alloc();
    }
    TextPool.blocks.reserve(std::max(TextPool.blocks.size() + blocks, TextPool.blocks.capacity()));
    TextPool.memory.push_back(std::make_unique_for_overwrite<wchar_t[]>(blocks << kBlockBits));
    for (size_t block = 0; block < blocks; ++block) {
        TextPool.blocks.push_back(TextPool.memory.back().get() + (block << kBlockBits));
    }
    TextPool.used = 0;
}

}  // namespace

std::wstring_view PooledText::View() const {
    if (position == 0) {
        return {};
    }
    const wchar_t* start = TextPool.blocks[position >> kBlockBits] + (position & (kBlockCharacters - 1));
    TextLength length = 0;
    std::memcpy(&length, start, sizeof length);
    return {start + kLengthCharacters, length};
}

PooledText KeepText(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    return {};
}

void ClearTextPool() {
    TextPool = {};
}
