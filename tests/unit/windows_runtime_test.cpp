// What the engine spells out for itself so that every build reads the same file alike, held against what the
// system and its C runtime do. Built for Windows only.
#include <gtest/gtest.h>

#include <climits>
#include <cwctype>
#include <random>

#include "core/decimal_text.h"
#include "core/white_space.h"
#include "platform/text.h"
#include "platform/text_decoding.h"
#include "platform/utf8.h"
#include "platform/windows/windows_headers.h"

namespace {

std::string Name(unsigned code) {
    char name[16];
    snprintf(name, sizeof name, "U+%04X", code);
    return name;
}

// Calls `visit` for every character of the basic plane except three: the one that ends a text, and U+0085 and
// U+180E, which are white space or not depending on the runtime.
template <typename Visit>
void ForEachCharacter(Visit visit) {
    for (unsigned code = 1; code <= 0xFFFF; ++code) {
        if (code != 0x85 && code != 0x180E) {
            visit(static_cast<wchar_t>(code), Name(code));
        }
    }
}

TEST(WindowsRuntime, ClassesWhiteSpaceAsWeDo) {
    ForEachCharacter([](wchar_t character, const std::string& name) {
        EXPECT_EQ(IsWideSpace(character), std::iswspace(character) != 0) << name;
    });
}

TEST(WindowsRuntime, SkipsTheSameCharactersBeforeANumber) {
    ForEachCharacter([](wchar_t character, const std::string& name) {
        const std::wstring text = std::wstring(1, character) + L"57";
        EXPECT_EQ(ParseDecimalInt(text), _wtoi(text.c_str())) << name;
    });
}

TEST(WindowsRuntime, EndsANumberAtTheSameCharacters) {
    ForEachCharacter([](wchar_t character, const std::string& name) {
        const std::wstring text = L"-5" + std::wstring(1, character) + L"7";
        EXPECT_EQ(ParseDecimalInt(text), _wtoi(text.c_str())) << name;
    });
}

TEST(WindowsRuntime, ReadsTheSameNumbers) {
    std::mt19937 random(162);
    constexpr std::wstring_view kCharacters = L"0123456789012345678901234567890123456789 \t+-.x";
    for (int round = 0; round < 200000; ++round) {
        std::wstring text;
        for (size_t size = random() % 14; size > 0; --size) {
            text.push_back(kCharacters[random() % kCharacters.size()]);
        }
        ASSERT_EQ(ParseDecimalInt(text), _wtoi(text.c_str())) << testing::PrintToString(text);
    }
}

// What the system makes of the octets as UTF-8; false: it refuses them.
bool DecodeAsTheSystemDoes(const std::string& octets, std::wstring& text) {
    const int size = static_cast<int>(octets.size());
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, octets.data(), size, nullptr, 0);
    text.resize(static_cast<size_t>(length));
    MultiByteToWideChar(CP_UTF8, 0, octets.data(), size, text.data(), length);
    return length > 0;
}

void ExpectSameDecoding(const std::string& octets) {
    std::wstring ours;
    std::wstring theirs;
    const bool valid = DecodeUtf8(octets, ours);
    ASSERT_EQ(valid, DecodeAsTheSystemDoes(octets, theirs)) << testing::PrintToString(octets);
    if (valid) {
        ASSERT_EQ(ours, theirs) << testing::PrintToString(octets);
    }
}

TEST(WindowsRuntime, AcceptsTheSameSequencesAsUtf8) {
    for (unsigned lead = 0x80; lead <= 0xFF; ++lead) {
        ExpectSameDecoding({static_cast<char>(lead)});
        for (unsigned second = 0; second <= 0xFF; ++second) {
            const std::string two = {static_cast<char>(lead), static_cast<char>(second)};
            ExpectSameDecoding(two);
            ExpectSameDecoding(two + "\x80");
            ExpectSameDecoding(two + "\xBF");
            ExpectSameDecoding(two + "\x80\x80");
            ExpectSameDecoding(two + "\xBF\xBF");
        }
    }
}

// Random octets that look like UTF-8 often enough to get past their first few.
TEST(WindowsRuntime, DecodesTheSameOctetStringsAsUtf8) {
    std::mt19937 random(161);
    const std::string pieces[] = {
        "a",        "Z",        "\n",           "\xC3\xA9",         "\xE2\x82\xAC",
        "\x80",     "\xBF",     "\xED\x9F\xBF", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF",
        "\xC0\x80", "\xED\xA0", "\xF4\x90",     "\xEF\xBB\xBF",     "\xFF"};
    for (int round = 0; round < 300000; ++round) {
        std::string octets;
        for (size_t count = 1 + random() % 12; count > 0; --count) {
            const bool any = random() % 40 == 0;
            // Mostly whole sequences, so that most strings are valid as far as the last piece or two.
            octets += any ? std::string(1, static_cast<char>(random() & 0xFF))
                          : pieces[random() % (random() % 8 ? 5 : 15)];
        }
        ExpectSameDecoding(octets);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(WindowsRuntime, DecodesTheRestAsTheAnsiCodePage) {
    std::string octets = "\xE9";
    for (unsigned code = 0; code <= 0xFF; ++code) {
        octets.push_back(static_cast<char>(code));
    }
    std::wstring ours;
    DecodeUtf8OrAnsi(octets, ours);
    wchar_t theirs[600];
    const int length =
        MultiByteToWideChar(CP_ACP, 0, octets.data(), static_cast<int>(octets.size()), theirs, 600);
    EXPECT_EQ(ours, std::wstring(theirs, static_cast<size_t>(length)));
}

// The system counts in int. Nothing is there to be read.
TEST(WindowsRuntime, IsNotAskedToDecodeMoreThanItCanCount) {
    std::wstring text = L"leftover";
    DecodeAnsi(std::string_view("x", size_t{INT_MAX} + 1), text);
    EXPECT_EQ(text, L"");
}

TEST(WindowsRuntime, DecodesNoOctetsToNoCharacters) {
    std::wstring text = L"leftover";
    DecodeAnsi({}, text);
    EXPECT_EQ(text, L"");
}

}  // namespace
