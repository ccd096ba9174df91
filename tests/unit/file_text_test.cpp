#include "core/file_text.h"

#include <gtest/gtest.h>

#include "tests/support/fenced_octets.h"

namespace {

std::string Encode(std::wstring_view text) {
    std::string octets = "leftover";
    EncodeFileText(text, octets);
    return octets;
}

std::string EncodeLines(std::wstring_view text) {
    std::string octets;
    AppendFileLines(text, octets);
    return octets;
}

std::wstring Decode(std::string_view octets) {
    const FencedOctets fenced(octets);
    std::wstring text = L"leftover";
    DecodeFileText(fenced.AsText(), text);
    return text;
}

std::wstring EveryOneOctetCharacter() {
    std::wstring text;
    for (int code = 0; code <= 0xFF; ++code) {
        text.push_back(static_cast<wchar_t>(code));
    }
    return text;
}

TEST(EncodeFileText, EveryCharacterUpTo0xFFIsTheOctetOfItsCode) {
    std::string expected;
    for (int code = 0; code <= 0xFF; ++code) {
        expected += code == '\n' ? "\r\n" : std::string(1, static_cast<char>(code));
    }
    EXPECT_EQ(Encode(EveryOneOctetCharacter()), expected);
}

TEST(EncodeFileText, LineEndOfTheProgramIsThreeOctetsOnDisk) {
    EXPECT_EQ(Encode(L"a\r\nb\r\n"), "a\r\r\nb\r\r\n");
}

TEST(EncodeFileText, LineFeedAloneGetsOneCarriageReturn) {
    EXPECT_EQ(Encode(L"\n"), "\r\n");
    EXPECT_EQ(Encode(L"\r"), "\r");
}

TEST(EncodeFileText, CharacterAbove0xFFEndsTheText) {
    EXPECT_EQ(Encode(L"caf\u00E9 \u0100 and more\r\n"), "caf\xE9 ");
    EXPECT_EQ(Encode(L"\u20AC"), "");
    EXPECT_EQ(Encode(L"a\n\uFFFF"), "a\r\n");
}

TEST(EncodeFileText, CharacterBeyondTheBasicPlaneEndsTheText) {
    EXPECT_EQ(Encode(L"a\U0001F600b"), "a");
}

TEST(EncodeFileText, NoLineEndIsAdded) {
    EXPECT_EQ(Encode(L"a"), "a");
    EXPECT_EQ(Encode(L""), "");
}

TEST(AppendFileLines, TextWithoutLineEndGetsOne) {
    EXPECT_EQ(EncodeLines(L"a"), "a\r\r\n");
    EXPECT_EQ(EncodeLines(L"a\r"), "a\r\r\r\n");
    EXPECT_EQ(EncodeLines(L"a\nb"), "a\r\nb\r\r\n");
}

TEST(AppendFileLines, TextThatEndsInALineFeedGetsNothing) {
    EXPECT_EQ(EncodeLines(L"a\r\n"), "a\r\r\n");
    EXPECT_EQ(EncodeLines(L"\n"), "\r\n");
}

TEST(AppendFileLines, EmptyTextStaysEmpty) {
    EXPECT_EQ(EncodeLines(L""), "");
}

TEST(AppendFileLines, CutTextLosesItsLineEndAndTheAddedOne) {
    EXPECT_EQ(EncodeLines(L"before \u20AC after\r\n"), "before ");
    EXPECT_EQ(EncodeLines(L"before \u20AC after"), "before ");
}

TEST(AppendFileLines, TheLastCharacterOfTheTextDecidesNotThatOfTheFile) {
    EXPECT_EQ(EncodeLines(L"line\n\u20AC"), "line\r\n")
        << "ends in a line feed on disk, was not asked for one";
}

TEST(AppendFileLines, EachTextStandsBehindTheOneBeforeAsIfWrittenByItself) {
    std::string octets = "first\r\r\n";
    AppendFileLines(L"cut \u20AC here\r\n", octets);
    AppendFileLines(L"ends its line", octets);
    AppendFileLines(L"", octets);
    AppendFileLines(L"own end\n", octets);
    EXPECT_EQ(octets, "first\r\r\ncut ends its line\r\r\nown end\r\n");
}

TEST(DecodeFileText, PairBecomesLineFeedAndLoneCarriageReturnStays) {
    EXPECT_EQ(Decode("a\r\nb"), L"a\nb");
    EXPECT_EQ(Decode("a\rb"), L"a\rb");
    EXPECT_EQ(Decode("a\nb"), L"a\nb");
    EXPECT_EQ(Decode("a\n\rb"), L"a\n\rb");
    EXPECT_EQ(Decode("a\r"), L"a\r");
}

TEST(DecodeFileText, ThreeOctetLineEndReadsBackAsCarriageReturnAndLineFeed) {
    EXPECT_EQ(Decode("a\r\r\n"), L"a\r\n");
    EXPECT_EQ(Decode("\r\r\r\n"), L"\r\r\n");
}

TEST(DecodeFileText, Octet0x1AEndsTheContent) {
    EXPECT_EQ(Decode("a\x1A"
                     "b"),
              L"a");
    EXPECT_EQ(Decode("\x1A"
                     "all of it"),
              L"");
    EXPECT_EQ(Decode("a\r\x1A\n"), L"a\r") << "no pair across the end";
}

TEST(DecodeFileText, EveryOtherOctetIsTheCharacterOfItsCode) {
    for (int code = 0; code <= 0xFF; ++code) {
        if (code != 0x1A) {
            EXPECT_EQ(Decode(std::string(1, static_cast<char>(code))),
                      std::wstring(1, static_cast<wchar_t>(code)));
        }
    }
}

TEST(DecodeFileText, ReadsBackWhatWasEncoded) {
    std::wstring text = EveryOneOctetCharacter();
    text.erase(text.find(L'\x1A'), 1);
    EXPECT_EQ(Decode(Encode(text)), text);
}

}  // namespace
