#include "platform/text_decoding.h"

#include <gtest/gtest.h>

#include "platform/text.h"
#include "platform/utf8.h"
#include "tests/support/fenced_octets.h"

namespace {

// The decoded text, or a marker if the octets are not UTF-8.
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

// Encodes a code point in `size` octets, valid UTF-8 or not.
std::string EncodeCodePoint(uint32_t codePoint, int size) {
    const uint32_t leads[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    std::string octets;
    for (int left = size - 1; left > 0; --left) {
        octets.insert(octets.begin(), static_cast<char>(0x80 | (codePoint & 0x3F)));
        codePoint >>= 6;
    }
    return static_cast<char>(leads[size] | codePoint) + octets;
}

int ShortestSize(uint32_t codePoint) {
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

TEST(DecodeUtf8, EveryScalarValueInItsShortestFormIsAccepted) {
    std::string octets;
    std::wstring text;
    for (uint32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            continue;
        }
        octets = EncodeCodePoint(codePoint, ShortestSize(codePoint));
        ASSERT_TRUE(DecodeUtf8(octets, text)) << std::hex << codePoint;
        if (text.size() == 2) {
            ASSERT_EQ(sizeof(wchar_t), 2U);
            const uint32_t offset = codePoint - 0x10000;
            ASSERT_EQ(static_cast<uint32_t>(text[0]), 0xD800 + offset / 0x400);
            ASSERT_EQ(static_cast<uint32_t>(text[1]), 0xDC00 + offset % 0x400);
        } else {
            ASSERT_EQ(text.size(), 1U);
            ASSERT_EQ(static_cast<uint32_t>(text[0]), codePoint);
        }
    }
}

TEST(DecodeUtf8, SurrogatesAndOverlongFormsAreRejected) {
    for (uint32_t codePoint = 0xD800; codePoint <= 0xDFFF; ++codePoint) {
        EXPECT_EQ(DecodeStrictly(EncodeCodePoint(codePoint, 3)), L"(not UTF-8)");
    }
    for (const uint32_t codePoint : {0x00U, 0x2FU, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xFFFFU}) {
        for (int size = ShortestSize(codePoint) + 1; size <= 4; ++size) {
            EXPECT_EQ(DecodeStrictly(EncodeCodePoint(codePoint, size)), L"(not UTF-8)")
                << codePoint << " " << size;
        }
    }
}

TEST(DecodeUtf8, TruncatedSequencesAndLoneContinuationsAreRejectedAnywhere) {
    for (const std::string wrong : {"\xC3", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\x80",
                                    "\xC3\xA9\xA9", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        for (const std::string& octets : {wrong, "before " + wrong, wrong + " after", wrong + "\xC3\xA9"}) {
            EXPECT_EQ(DecodeStrictly(octets), L"(not UTF-8)") << testing::PrintToString(octets);
        }
    }
}

TEST(DecodeUtf8, NoCharacterIsSpecial) {
    EXPECT_EQ(DecodeStrictly("\xEF\xBB\xBFiso"), L"\uFEFFiso");
    EXPECT_EQ(DecodeStrictly(std::string_view("a\0b\r\r\n\x1A", 7)), std::wstring(L"a\0b\r\r\n\x1A", 7));
    EXPECT_EQ(DecodeStrictly(""), L"");
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

TEST(DecodeUtf8, OneInvalidOctetIsFoundAtAnyPosition) {
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

TEST(DecodeUtf8OrAnsi, ValidUtf8IsDecodedAsUtf8) {
    EXPECT_EQ(DecodeEither("caf\xC3\xA9"), L"caf\u00E9");
    EXPECT_EQ(DecodeEither(""), L"");
}

bool AnsiIsWindows1252() {
    std::wstring text;
    DecodeAnsi("\x80\xE4", text);
    return text == L"\u20AC\u00E4";
}

TEST(DecodeAnsi, EveryOctetIsOneCharacterOfCodePage1252) {
    if (!AnsiIsWindows1252()) {
        GTEST_SKIP() << "The expected texts are for code page 1252; this system uses another.";
    }
    EXPECT_EQ(DecodeEither("caf\xC3\xA9 \xE9"), L"caf\u00C3\u00A9 \u00E9") << "one invalid octet is enough";
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

TEST(EncodeAnsi, AddressTextIsUnchangedUpToAZero) {
    std::string octets = "leftover";
    ASSERT_TRUE(EncodeAnsi(L" 10.1.2.3 ", octets));
    EXPECT_EQ(octets, " 10.1.2.3 ");
    ASSERT_TRUE(EncodeAnsi({}, octets));
    EXPECT_EQ(octets, "");
    ASSERT_TRUE(EncodeAnsi(std::wstring(L"10.1.2.3\0 more", 14), octets));
    EXPECT_EQ(octets, "10.1.2.3");
}

TEST(EncodeAnsi, CharactersOutsideTheCodePageAreNotDropped) {
    std::string octets;
    ASSERT_TRUE(EncodeAnsi(L"\u0436", octets));
    EXPECT_FALSE(octets.empty());
}

}  // namespace
