#include "trap/ber_reader.h"

#include "core/decimal_text.h"

bool ReadLongLength(OctetRange& left, uint8_t lengthOctet, uint64_t* length) {
    const uint8_t count = lengthOctet & 0x7F;
    const uint8_t* octet = nullptr;
    if (count < 1 || count > 4 || !ReadOctets(left, count, &octet)) {
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

std::wstring DecodeOidText(const uint8_t* octets, size_t count) {
    std::wstring text;
    if (count == 0) {
        return text;
    }
    AppendDecimal(text, octets[0] / 40U);
    text.push_back(L'.');
    AppendDecimal(text, octets[0] % 40U);
    uint64_t arc = 0;
    for (size_t index = 1; index < count; ++index) {
        arc = (arc << 7) | (octets[index] & 0x7FU);
        if ((octets[index] & 0x80) == 0) {
            text.push_back(L'.');
            AppendDecimal(text, arc);
            arc = 0;
        }
    }
    return text;
}
