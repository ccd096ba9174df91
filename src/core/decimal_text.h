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

// No value has more decimal digits than this.
constexpr size_t kMaxDecimalDigits = 20;

// Writes plain decimal digits (no grouping, no padding) to `out`, which has room for kMaxDecimalDigits, and
// returns the place behind the last one.
wchar_t* WriteLongDecimal(wchar_t* out, uint64_t value);
inline wchar_t* WriteDecimal(wchar_t* out, uint64_t value) {
    // Most arcs of an identifier have one digit: seeing to them in place takes a tenth off the decoding of
    // a trap.
    if (value < 10) {
        *out = static_cast<wchar_t>(L'0' + value);
        return out + 1;
    }
    return WriteLongDecimal(out, value);
}

// The same, appended; a negative value gets a leading "-".
void AppendDecimal(std::wstring& text, uint64_t value);
void AppendSignedDecimal(std::wstring& text, int64_t value);
