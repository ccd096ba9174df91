// Converts decimal numbers from and to text. Parsing follows the rules of the Windows runtime's _wtoi,
// implemented here so that every build reads the same file alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Skips leading white space (IsWideSpace, except U+0085), then reads an optional sign and digits, and ignores
// the rest. Returns 0 if there are no digits. Out-of-range values are clamped to int32_t, never wrapped. Like
// the runtime, accepts the decimal digits of several other scripts.
int32_t ParseDecimalInt(std::wstring_view text);

// Append `value` as plain decimal digits, without grouping or padding. A negative value gets a leading "-".
void AppendDecimal(std::wstring& text, uint64_t value);
void AppendSignedDecimal(std::wstring& text, int64_t value);
