#include "trap/ipv4_text.h"

#include "core/decimal_text.h"

std::wstring FormatIpv4Address(uint32_t address) {
    std::wstring text;
    AppendDecimal(text, address >> 24);
    for (const unsigned shift : {16U, 8U, 0U}) {
        text.push_back(L'.');
        AppendDecimal(text, (address >> shift) & 0xFFU);
    }
    return text;
}
