#include "core/decimal_text.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "core/white_space.h"

namespace {

// The digit zero of each other script that the runtime's conversion accepts, ascending.
constexpr uint32_t kDigitZeros[] = {0x0660, 0x06F0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0C66, 0x0CE6,
                                    0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};

// Returns -1 if the character is not a digit.
int DigitValue(wchar_t character) {
    const auto code = static_cast<uint32_t>(character);
    if (code - L'0' <= 9) {
        return static_cast<int>(code - L'0');
    }
    if (code < 0x0660) {
        return -1;
    }
    for (const uint32_t zero : kDigitZeros) {
        if (code >= zero && code - zero <= 9) {
            return static_cast<int>(code - zero);
        }
    }
    return -1;
}

bool SkippedBeforeNumber(wchar_t character) {
    return character != L'\u0085' && IsWideSpace(character);
}

}  // namespace

int32_t ParseDecimalInt(std::wstring_view text) {
    constexpr int64_t kMax = std::numeric_limits<int32_t>::max();
    constexpr int64_t kMin = std::numeric_limits<int32_t>::min();
    const auto* position = std::find_if_not(text.data(), text.data() + text.size(), SkippedBeforeNumber);
    const auto* end = text.data() + text.size();
    bool negative = false;
    if (position != end && (*position == L'-' || *position == L'+')) {
        negative = *position == L'-';
        ++position;
    }
    int64_t value = 0;
    for (; position != end; ++position) {
        const int digit = DigitValue(*position);
        if (digit < 0) {
            break;
        }
        // Limited to one above the range, so that it cannot overflow and is still clamped after the loop.
        value = std::min(value * 10 + digit, kMax + 1);
    }
    return static_cast<int32_t>(std::clamp(negative ? -value : value, kMin, kMax));
}

void AppendDecimal(std::wstring& text, uint64_t value) {
    wchar_t digits[20];  // the largest value has 20
    wchar_t* const end = std::end(digits);
    wchar_t* first = end;
    do {
        *--first = static_cast<wchar_t>(L'0' + value % 10);
        value /= 10;
    } while (value != 0);
    text.append(first, end);
}

void AppendSignedDecimal(std::wstring& text, int64_t value) {
    const auto magnitude = static_cast<uint64_t>(value);
    if (value < 0) {
        text.push_back(L'-');
    }
    AppendDecimal(text, value < 0 ? 0 - magnitude : magnitude);
}
