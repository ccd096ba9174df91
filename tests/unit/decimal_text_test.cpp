#include "core/decimal_text.h"

#include <gtest/gtest.h>

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
    {L"- 5", 0, "a blank after the sign"},
    {L"-", 0, "a sign alone"},
    {L"  8162abc", 8162, "blanks before, letters after"},
    {L"\t\n\v\f\r 9", 9, "every ASCII white space"},
    {L"\u00A0\u20035", 5, "white space beyond ASCII"},
    {L"\u00855", 0, "U+0085 is white space elsewhere, but not before a number"},
    {L"abc", 0, "no digits"},
    {L"a1", 0, "digits only after a letter"},
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
    {L"\u00B2", 0, "a superscript is not a digit"},
};

TEST(ParseDecimalInt, ReadsNumbersAsTheRuntimeDoes) {
    for (const NumberCase& row : kNumbers) {
        EXPECT_EQ(ParseDecimalInt(row.text), row.value) << row.why;
    }
}

TEST(ParseDecimalInt, ReadsOnlyTheGivenText) {
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
