#include "trap/ber_reader.h"

#include "core/decimal_text.h"

bool ReadTlvHeader(const uint8_t* position, const uint8_t* end, TlvHeader* header) {
    if (end - position < 2) {
        return false;
    }
    const uint8_t tag = position[0];
    const uint8_t lengthOctet = position[1];
    const uint8_t* content = position + 2;
    uint64_t length = lengthOctet;
    if ((lengthOctet & 0x80) != 0) {
        const int lengthOctets = lengthOctet & 0x7F;
        if (lengthOctets < 1 || lengthOctets > 4 || lengthOctets > end - content) {
            return false;
        }
        length = 0;
        for (const uint8_t* contentStart = content + lengthOctets; content != contentStart; ++content) {
            length = (length << 8) | *content;
        }
    }
    // Wanted against remaining, never a sum of a pointer and a length that a stranger chose.
    if (length > static_cast<uint64_t>(end - content)) {
        return false;
    }
    *header = {tag, content, content + length};
    return true;
}

uint64_t DecodeBerInteger(const uint8_t* octets, size_t count) {
    if (count == 0) {
        return 0;
    }
    uint64_t value = 0;
    for (size_t index = 0; index < count; ++index) {
        value = (value << 8) | octets[index];
    }
    if ((octets[0] & 0x80) != 0) {
        value |= ~uint64_t{0} << ((8 * count) & 63);
    }
    return value;
}

void DecodeOidText(const uint8_t* octets, size_t count, std::wstring& text) {
    text.clear();
    if (count == 0) {
        return;
    }
    // An arc of one octet is at most ".127", and longer arcs have fewer digits an octet; the last number is
    // written with room for the longest one.
    constexpr size_t kMaxCharactersPerOctet = 4;
    text.resize(count * kMaxCharactersPerOctet + kMaxDecimalDigits);
    wchar_t* out = WriteDecimal(text.data(), octets[0] / 40U);
    *out++ = L'.';
    out = WriteDecimal(out, octets[0] % 40U);
    uint64_t arc = 0;
    for (size_t index = 1; index < count; ++index) {
        arc = (arc << 7) | (octets[index] & 0x7FU);
        if ((octets[index] & 0x80) == 0) {
            *out++ = L'.';
            out = WriteDecimal(out, arc);
            arc = 0;
        }
    }
    text.resize(static_cast<size_t>(out - text.data()));
}
