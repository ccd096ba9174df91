#include "trap/ber_reader.h"

#include "core/decimal_text.h"

bool TakeLongLength(OctetRange& left, uint8_t lengthOctet, uint64_t* length) {
    const uint8_t count = lengthOctet & 0x7F;
    const uint8_t* octet = nullptr;
    if (count < 1 || count > 4 || !TakeOctets(left, count, &octet)) {
        return false;
    }
    for (*length = 0; octet != left.position; ++octet) {
        *length = (*length << 8) | *octet;
    }
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
