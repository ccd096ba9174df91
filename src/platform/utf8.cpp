#include "platform/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

constexpr uint64_t kHighBits = 0x8080808080808080U;

// Returns how many octets at the start of the range are ASCII.
size_t CountAsciiPrefix(const unsigned char* position, size_t size) {
    size_t count = 0;
    for (; size - count >= sizeof(uint64_t); count += sizeof(uint64_t)) {
        uint64_t block = 0;
        std::memcpy(&block, position + count, sizeof block);
        if ((block & kHighBits) != 0) {
            break;
        }
    }
    while (count < size && position[count] < 0x80) {
        ++count;
    }
    return count;
}

struct Utf8Lead {
    size_t trailing = 0;   // number of octets that follow; 0: not a valid lead octet
    uint32_t bits = 0;     // the highest bits of the code point
    uint32_t minimum = 0;  // a smaller code point is an overlong form
};

Utf8Lead ReadLead(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return {1, lead & 0x1FU, 0x80};
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return {2, lead & 0x0FU, 0x800};
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return {3, lead & 0x07U, 0x10000};
    }
    return {};
}

bool IsScalarValue(uint32_t codePoint) {
    return codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

wchar_t* WriteCodePoint(wchar_t* out, uint32_t codePoint) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (codePoint > 0xFFFF) {
            const SurrogatePair pair = SplitCodePoint(codePoint);
            *out++ = static_cast<wchar_t>(pair.high);
            *out++ = static_cast<wchar_t>(pair.low);
            return out;
        }
    }
    *out++ = static_cast<wchar_t>(codePoint);
    return out;
}

// Decodes the sequence of two to four octets at `position`. Returns its length, or 0 if it is not well
// formed.
size_t ReadSequence(const unsigned char* position, size_t size, uint32_t* codePoint) {
    const Utf8Lead lead = ReadLead(*position);
    if (lead.trailing == 0 || lead.trailing >= size) {
        return 0;
    }
    uint32_t value = lead.bits;
    for (size_t index = 1; index <= lead.trailing; ++index) {
        if ((position[index] & 0xC0) != 0x80) {
            return 0;
        }
        value = (value << 6) | (position[index] & 0x3FU);
    }
    if (value < lead.minimum || !IsScalarValue(value)) {
        return 0;
    }
    *codePoint = value;
    return lead.trailing + 1;
}

}  // namespace

bool DecodeUtf8(std::string_view octets, std::wstring& text) {
    const auto* position = reinterpret_cast<const unsigned char*>(octets.data());
    size_t left = octets.size();
    // No sequence gives more wide characters than it has octets.
    text.resize(octets.size());
    wchar_t* out = text.data();
    while (left > 0) {
        const size_t ascii = CountAsciiPrefix(position, left);
        out = std::copy(position, position + ascii, out);
        position += ascii;
        left -= ascii;
        if (left == 0) {
            break;
        }
        uint32_t codePoint = 0;
        const size_t length = ReadSequence(position, left, &codePoint);
        if (length == 0) {
            return false;
        }
        out = WriteCodePoint(out, codePoint);
        position += length;
        left -= length;
    }
    text.resize(static_cast<size_t>(out - text.data()));
    return true;
}
