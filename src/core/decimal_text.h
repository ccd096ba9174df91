// Decimal numbers in text that operators and MIB authors wrote, with the rules of the runtime's _wtoi spelled
// out here, so that every build reads the same file alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Leading white space (IsWideSpace, but not U+0085) skipped, an optional sign, digits up to the first other
// character; the rest is ignored. No digits give 0. Clamped to the range of int32_t, never wrapped.
// The runtime also takes the decimal digits of several other scripts; so does this.
int32_t ParseDecimalInt(std::wstring_view text);

// Appends plain decimal digits (no grouping, no padding); a negative value gets a leading "-".
void AppendDecimal(std::wstring& text, uint64_t value);
void AppendSignedDecimal(std::wstring& text, int64_t value);
