#include "trap/ipv4_text.h"

#include "core/decimal_text.h"

void AppendIpv4Text(std::wstring& text, uint32_t address) {
    AppendDecimal(text, address >> 24);
    for (const unsigned shift : {16U, 8U, 0U}) {
        text.push_back(L'.');
        AppendDecimal(text, (address >> shift) & 0xFFU);
    }
}
