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

TEST(EncodeFileText, EveryCharacterUpTo0xFFIsTheOctetOfItsCodeAndReadsBack) {
    for (int code = 0; code <= 0xFF; ++code) {
        const std::wstring text = {L'a', static_cast<wchar_t>(code), L'b'};
        const std::string octets = code == '\n' ? "a\r\nb" : std::string{'a', static_cast<char>(code), 'b'};
        EXPECT_EQ(Encode(text), octets) << code;
        EXPECT_EQ(Decode(octets), code == 0x1A ? L"a" : text) << code;
    }
}

TEST(EncodeFileText, EachLineFeedGetsACarriageReturn) {
    EXPECT_EQ(Encode(L"a\r\nb\r\n"), "a\r\r\nb\r\r\n");
    EXPECT_EQ(Encode(L"\r"), "\r");
    EXPECT_EQ(Encode(L"a"), "a") << "no line end is added";
    EXPECT_EQ(Encode(L""), "");
}

TEST(EncodeFileText, CharacterAbove0xFFEndsTheText) {
    EXPECT_EQ(Encode(L"caf\u00E9 \u0100 and more\r\n"), "caf\xE9 ");
    EXPECT_EQ(Encode(L"\u20AC"), "");
    EXPECT_EQ(Encode(L"a\n\uFFFF"), "a\r\n");
    EXPECT_EQ(Encode(L"a\U0001F600b"), "a");
}

TEST(AppendFileLines, TextThatDoesNotEndInALineFeedGetsALineEnd) {
    EXPECT_EQ(EncodeLines(L"a"), "a\r\r\n");
    EXPECT_EQ(EncodeLines(L"a\r"), "a\r\r\r\n");
    EXPECT_EQ(EncodeLines(L"a\nb"), "a\r\nb\r\r\n");
    EXPECT_EQ(EncodeLines(L"a\r\n"), "a\r\r\n");
    EXPECT_EQ(EncodeLines(L"\n"), "\r\n");
    EXPECT_EQ(EncodeLines(L""), "");
}

TEST(AppendFileLines, TruncatedTextGetsNoLineEnd) {
    EXPECT_EQ(EncodeLines(L"before \u20AC after\r\n"), "before ");
    EXPECT_EQ(EncodeLines(L"before \u20AC after"), "before ");
    EXPECT_EQ(EncodeLines(L"line\n\u20AC"), "line\r\n");
}

TEST(AppendFileLines, EachTextIsAppendedAsIfWrittenAlone) {
    std::string octets = "first\r\r\n";
    AppendFileLines(L"cut \u20AC here\r\n", octets);
    AppendFileLines(L"ends its line", octets);
    AppendFileLines(L"", octets);
    AppendFileLines(L"own end\n", octets);
    EXPECT_EQ(octets, "first\r\r\ncut ends its line\r\r\nown end\r\n");
}

TEST(DecodeFileText, PairBecomesLineFeedAndLoneCarriageReturnIsUnchanged) {
    EXPECT_EQ(Decode("a\r\nb"), L"a\nb");
    EXPECT_EQ(Decode("a\n\rb"), L"a\n\rb");
    EXPECT_EQ(Decode("a\r"), L"a\r");
    EXPECT_EQ(Decode("a\r\r\n"), L"a\r\n") << "a line end as the program writes it";
    EXPECT_EQ(Decode("\r\r\r\n"), L"\r\r\n");
}

TEST(DecodeFileText, Octet0x1AEndsTheContent) {
    EXPECT_EQ(Decode("\x1A"
                     "all of it"),
              L"");
    EXPECT_EQ(Decode("a\r\x1A\n"), L"a\r") << "no pair across the end";
}

}  // namespace
