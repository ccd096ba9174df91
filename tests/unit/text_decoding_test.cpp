#include "platform/text_decoding.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "platform/utf8.h"
#include "tests/support/fenced_octets.h"

namespace {

// What DecodeUtf8 makes of the octets, or a mark that they are not UTF-8.
std::wstring DecodeStrictly(std::string_view octets) {
    const FencedOctets fenced(octets);
    std::wstring text = L"leftover";
    return DecodeUtf8(fenced.AsText(), text) ? text : L"(not UTF-8)";
}

std::wstring DecodeEither(std::string_view octets) {
    const FencedOctets fenced(octets);
    std::wstring text = L"leftover";
    DecodeUtf8OrAnsi(fenced.AsText(), text);
    return text;
}

// The octets of a code point, whether UTF-8 may hold it or not.
std::string EncodeCodePoint(uint32_t codePoint, int size) {
    const uint32_t leads[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    std::string octets;
    for (int left = size - 1; left > 0; --left) {
        octets.insert(octets.begin(), static_cast<char>(0x80 | (codePoint & 0x3F)));
        codePoint >>= 6;
    }
    return static_cast<char>(leads[size] | codePoint) + octets;
}

int ShortestForm(uint32_t codePoint) {
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

TEST(DecodeUtf8, EveryScalarValueInItsShortestFormIsAccepted) {
    std::string octets;
    std::wstring text;
    for (uint32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            continue;
        }
        octets = EncodeCodePoint(codePoint, ShortestForm(codePoint));
        ASSERT_TRUE(DecodeUtf8(octets, text)) << std::hex << codePoint;
        if (text.size() == 2) {
            ASSERT_EQ(sizeof(wchar_t), 2U);
            const SurrogatePair pair = SplitCodePoint(codePoint);
            ASSERT_EQ(static_cast<uint32_t>(text[0]), pair.high);
            ASSERT_EQ(static_cast<uint32_t>(text[1]), pair.low);
        } else {
            ASSERT_EQ(text.size(), 1U);
            ASSERT_EQ(static_cast<uint32_t>(text[0]), codePoint);
        }
    }
}

TEST(SplitCodePoint, HalvesLieInTheirRangesAndGiveTheCharacterBack) {
    uint32_t expectedHigh = 0xD800;
    uint32_t expectedLow = 0xDC00;
    for (uint32_t codePoint = 0x10000; codePoint <= 0x10FFFF; ++codePoint) {
        const SurrogatePair pair = SplitCodePoint(codePoint);
        ASSERT_EQ(pair.high, expectedHigh) << std::hex << codePoint;
        ASSERT_EQ(pair.low, expectedLow) << std::hex << codePoint;
        // Counted up as the pairs are: the low half first, from DC00 to DFFF.
        expectedLow = expectedLow == 0xDFFF ? 0xDC00 : expectedLow + 1;
        expectedHigh += expectedLow == 0xDC00;
    }
    EXPECT_EQ(expectedHigh, 0xDC00U) << "the last pair is DBFF DFFF";
}

TEST(DecodeUtf8, SurrogatesAreRejected) {
    for (uint32_t codePoint = 0xD800; codePoint <= 0xDFFF; ++codePoint) {
        EXPECT_EQ(DecodeStrictly(EncodeCodePoint(codePoint, 3)), L"(not UTF-8)");
    }
}

TEST(DecodeUtf8, OverlongFormsAreRejected) {
    for (const uint32_t codePoint : {0x00U, 0x2FU, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xFFFFU}) {
        for (int size = ShortestForm(codePoint) + 1; size <= 4; ++size) {
            EXPECT_EQ(DecodeStrictly(EncodeCodePoint(codePoint, size)), L"(not UTF-8)")
                << codePoint << " " << size;
        }
    }
}

TEST(DecodeUtf8, NothingAbove10FFFFIsAccepted) {
    EXPECT_NE(DecodeStrictly("\xF4\x8F\xBF\xBF"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("\xF4\x90\x80\x80"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("\xF5\x80\x80\x80"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("\xF8\x88\x80\x80\x80"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("\xFE"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("\xFF"), L"(not UTF-8)");
}

TEST(DecodeUtf8, CutSequencesAreRejectedWhereverTheyStand) {
    for (const std::string& whole :
         {std::string("\xC3\xA9"), std::string("\xE2\x82\xAC"), std::string("\xF0\x9F\x98\x80")}) {
        for (size_t size = 1; size < whole.size(); ++size) {
            const std::string cut = whole.substr(0, size);
            EXPECT_EQ(DecodeStrictly(cut), L"(not UTF-8)");
            EXPECT_EQ(DecodeStrictly("text in front " + cut), L"(not UTF-8)");
            EXPECT_EQ(DecodeStrictly(cut + " and behind"), L"(not UTF-8)");
            EXPECT_EQ(DecodeStrictly(cut + whole), L"(not UTF-8)");
        }
        EXPECT_NE(DecodeStrictly(whole + whole), L"(not UTF-8)");
    }
}

TEST(DecodeUtf8, LoneContinuationIsRejected) {
    EXPECT_EQ(DecodeStrictly("\x80"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("abc\xBF"), L"(not UTF-8)");
    EXPECT_EQ(DecodeStrictly("\xC3\xA9\xA9"), L"(not UTF-8)");
}

TEST(DecodeUtf8, OnlyOctetsFromC2ToF4BeginASequence) {
    for (int lead = 0x80; lead <= 0xFF; ++lead) {
        const size_t whole = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        for (size_t size = 1; size <= 6; ++size) {
            std::string octets(size, lead == 0xF4 ? '\x80' : '\xA0');
            octets[0] = static_cast<char>(lead);
            // ED A0 begins a surrogate.
            const bool valid = lead >= 0xC2 && lead <= 0xF4 && lead != 0xED && size == whole;
            EXPECT_EQ(DecodeStrictly(octets) != L"(not UTF-8)", valid) << std::hex << lead << " " << size;
        }
    }
}

TEST(DecodeUtf8, ByteOrderMarkStaysACharacter) {
    EXPECT_EQ(DecodeStrictly("\xEF\xBB\xBFiso"), L"\uFEFFiso");
}

TEST(DecodeUtf8, ZeroOctetsAndLineEndsAreOrdinaryCharacters) {
    EXPECT_EQ(DecodeStrictly(std::string_view("a\0b\r\r\n\x1A", 7)), std::wstring(L"a\0b\r\r\n\x1A", 7));
    EXPECT_EQ(DecodeStrictly(""), L"");
}

TEST(DecodeUtf8, OneWrongOctetIsFoundAtAnyDistance) {
    for (size_t size = 1; size < 40; ++size) {
        for (size_t at = 0; at < size; ++at) {
            std::string octets(size, 'x');
            EXPECT_EQ(DecodeStrictly(octets), std::wstring(size, L'x'));
            for (const char wrong : {'\xE9', '\x80', '\xFF'}) {
                octets[at] = wrong;
                EXPECT_EQ(DecodeStrictly(octets), L"(not UTF-8)") << at << " of " << size;
            }
        }
    }
}

// The code page of the system that runs the tests: 1252 wherever they run today.
bool AnsiIsWindows1252() {
    std::wstring text;
    DecodeAnsi("\x80\xE4", text);
    return text == L"\u20AC\u00E4";
}

TEST(DecodeUtf8OrAnsi, ValidUtf8IsTakenAsSuch) {
    EXPECT_EQ(DecodeEither("caf\xC3\xA9"), L"caf\u00E9");
    EXPECT_EQ(DecodeEither(""), L"");
}

TEST(DecodeUtf8OrAnsi, OneInvalidOctetMakesAllOfItAnsi) {
    if (!AnsiIsWindows1252()) {
        GTEST_SKIP() << "The expected texts are those of code page 1252, and this system's is another.";
    }
    EXPECT_EQ(DecodeEither("\xE9"), L"\u00E9");
    EXPECT_EQ(DecodeEither("caf\xC3\xA9 \xE9"), L"caf\u00C3\u00A9 \u00E9");
}

TEST(DecodeAnsi, EveryOctetIsOneCharacterOfCodePage1252) {
    if (!AnsiIsWindows1252()) {
        GTEST_SKIP() << "The expected texts are those of code page 1252, and this system's is another.";
    }
    constexpr wchar_t kFrom80To9F[] =
        L"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        L"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
    for (int code = 0; code <= 0xFF; ++code) {
        std::wstring text;
        DecodeAnsi(std::string(1, static_cast<char>(code)), text);
        const wchar_t expected =
            code >= 0x80 && code <= 0x9F ? kFrom80To9F[code - 0x80] : static_cast<wchar_t>(code);
        EXPECT_EQ(text, std::wstring(1, expected)) << code;
    }
}

TEST(EncodeAnsi, AddressTextIsUnchangedAndBlanksStay) {
    std::string octets = "leftover";
    ASSERT_TRUE(EncodeAnsi(L" 10.1.2.3 ", octets));
    EXPECT_EQ(octets, " 10.1.2.3 ");
    ASSERT_TRUE(EncodeAnsi({}, octets));
    EXPECT_EQ(octets, "");
}

TEST(EncodeAnsi, ZeroCharacterEndsTheText) {
    std::string octets;
    ASSERT_TRUE(EncodeAnsi(std::wstring(L"10.1.2.3\0 more", 14), octets));
    EXPECT_EQ(octets, "10.1.2.3");
}

TEST(EncodeAnsi, CharactersTheCodePageLacksAreNotDropped) {
    std::string octets;
    ASSERT_TRUE(EncodeAnsi(L"\u0436", octets));
    EXPECT_FALSE(octets.empty());
}

}  // namespace
