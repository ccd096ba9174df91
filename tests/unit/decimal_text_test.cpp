#include "core/decimal_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>

namespace {

struct NumberCase {
    std::wstring text;
    int32_t value;
    const char* why;
};

const NumberCase kNumbers[] = {
    {L"", 0, "empty"},
    {L"162", 162, "plain"},
    {L"007", 7, "leading zeros"},
    {L"-5", -5, "minus"},
    {L"+5", 5, "plus"},
    {L"--5", 0, "two signs"},
    {L"+-5", 0, "two different signs"},
    {L"- 5", 0, "a blank behind the sign"},
    {L"-", 0, "a sign alone"},
    {L"  8162abc", 8162, "blanks in front, letters behind"},
    {L"\t\n\v\f\r 9", 9, "every ASCII white space"},
    {L"\u00A0\u20035", 5, "white space beyond ASCII"},
    {L"\u00855", 0, "U+0085 is white space elsewhere, but not in front of a number"},
    {L"abc", 0, "no digits"},
    {L"a1", 0, "digits only behind a letter"},
    {L"12 34", 12, "up to the first other character"},
    {L"0x10", 0, "no hexadecimal"},
    {L"1e3", 1, "no exponent"},
    {L"10.9", 10, "no fraction"},
    {L"2147483647", INT32_MAX, "the largest"},
    {L"2147483648", INT32_MAX, "one more is clamped"},
    {L"-2147483648", INT32_MIN, "the smallest"},
    {L"-2147483649", INT32_MIN, "one less is clamped"},
    {L"4294968296", INT32_MAX, "does not wrap to 1000"},
    {L"18446744073709551617", INT32_MAX, "does not wrap in 64 bits"},
    {L"-99999999999999999999999999999999", INT32_MIN, "however long"},
    {std::wstring(L"1\0002", 3), 1, "a zero character ends the number"},
    {L"\uFF11\uFF16\uFF12", 162, "full-width digits"},
    {L"\u0661\u0662", 12, "Arabic-Indic digits"},
    {L"\u00B2", 0, "a superscript is no digit"},
};

TEST(ParseDecimalInt, ReadsNumbersAsTheRuntimeDoes) {
    for (const NumberCase& row : kNumbers) {
        EXPECT_EQ(ParseDecimalInt(row.text), row.value) << row.why;
    }
}

// What the character is worth in a number; -1: it is no digit. The scripts stand here by name, so that the
// table in the program is not held against a copy of itself.
int ExpectedDigit(wchar_t character) {
    constexpr std::wstring_view kScripts[] = {
        L"0123456789",
        L"\u0660\u0661\u0662\u0663\u0664\u0665\u0666\u0667\u0668\u0669",  // Arabic-Indic
        L"\u06F0\u06F1\u06F2\u06F3\u06F4\u06F5\u06F6\u06F7\u06F8\u06F9",  // the same, extended
        L"\u0966\u0967\u0968\u0969\u096A\u096B\u096C\u096D\u096E\u096F",  // Devanagari
        L"\u09E6\u09E7\u09E8\u09E9\u09EA\u09EB\u09EC\u09ED\u09EE\u09EF",  // Bengali
        L"\u0A66\u0A67\u0A68\u0A69\u0A6A\u0A6B\u0A6C\u0A6D\u0A6E\u0A6F",  // Gurmukhi
        L"\u0AE6\u0AE7\u0AE8\u0AE9\u0AEA\u0AEB\u0AEC\u0AED\u0AEE\u0AEF",  // Gujarati
        L"\u0B66\u0B67\u0B68\u0B69\u0B6A\u0B6B\u0B6C\u0B6D\u0B6E\u0B6F",  // Oriya
        L"\u0C66\u0C67\u0C68\u0C69\u0C6A\u0C6B\u0C6C\u0C6D\u0C6E\u0C6F",  // Telugu
        L"\u0CE6\u0CE7\u0CE8\u0CE9\u0CEA\u0CEB\u0CEC\u0CED\u0CEE\u0CEF",  // Kannada
        L"\u0D66\u0D67\u0D68\u0D69\u0D6A\u0D6B\u0D6C\u0D6D\u0D6E\u0D6F",  // Malayalam
        L"\u0E50\u0E51\u0E52\u0E53\u0E54\u0E55\u0E56\u0E57\u0E58\u0E59",  // Thai
        L"\u0ED0\u0ED1\u0ED2\u0ED3\u0ED4\u0ED5\u0ED6\u0ED7\u0ED8\u0ED9",  // Lao
        L"\u0F20\u0F21\u0F22\u0F23\u0F24\u0F25\u0F26\u0F27\u0F28\u0F29",  // Tibetan
        L"\u1040\u1041\u1042\u1043\u1044\u1045\u1046\u1047\u1048\u1049",  // Myanmar
        L"\u17E0\u17E1\u17E2\u17E3\u17E4\u17E5\u17E6\u17E7\u17E8\u17E9",  // Khmer
        L"\u1810\u1811\u1812\u1813\u1814\u1815\u1816\u1817\u1818\u1819",  // Mongolian
        L"\uFF10\uFF11\uFF12\uFF13\uFF14\uFF15\uFF16\uFF17\uFF18\uFF19",  // full-width
    };
    for (const std::wstring_view digits : kScripts) {
        if (const size_t value = digits.find(character); value != digits.npos) {
            return static_cast<int>(value);
        }
    }
    return -1;
}

TEST(ParseDecimalInt, KnowsTheDigitsOfEveryScriptThatTheRuntimeKnowsAndNoOthers) {
    for (uint32_t code = 1; code <= 0xFFFF; ++code) {
        const auto character = static_cast<wchar_t>(code);
        const int digit = ExpectedDigit(character);
        const std::wstring text = {L'7', character, L'5'};
        EXPECT_EQ(ParseDecimalInt(text), digit < 0 ? 7 : 705 + 10 * digit) << "U+" << std::hex << code;
    }
}

TEST(ParseDecimalInt, LooksNoFurtherThanTheGivenText) {
    const std::wstring text = L"12345";
    EXPECT_EQ(ParseDecimalInt(std::wstring_view(text).substr(0, 3)), 123);
}

TEST(AppendDecimal, WritesPlainDigits) {
    std::wstring text = L"n=";
    AppendDecimal(text, 0);
    EXPECT_EQ(text, L"n=0");
    AppendDecimal(text, 1234567890);
    EXPECT_EQ(text, L"n=01234567890");
    text.clear();
    AppendDecimal(text, UINT64_MAX);
    EXPECT_EQ(text, L"18446744073709551615");
}

TEST(AppendSignedDecimal, CoversTheWholeRange) {
    const auto format = [](int64_t value) {
        std::wstring text;
        AppendSignedDecimal(text, value);
        return text;
    };
    EXPECT_EQ(format(INT64_MIN), L"-9223372036854775808");
    EXPECT_EQ(format(INT64_MAX), L"9223372036854775807");
    EXPECT_EQ(format(-1), L"-1");
    EXPECT_EQ(format(0), L"0");
    EXPECT_EQ(format(42), L"42");
}

}  // namespace
