// Compares the engine's own tables (digits, white space, UTF-8) with the system and its C runtime. Built for
// Windows only.
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

// Calls `visit` for every character of the basic plane except U+0000, which ends a text, and U+0085 and
// U+180E, which are white space in some runtimes only.
template <typename Visit>
void ForEachCharacter(Visit visit) {
    for (unsigned code = 1; code <= 0xFFFF; ++code) {
        if (code != 0x85 && code != 0x180E) {
            visit(static_cast<wchar_t>(code), Name(code));
        }
    }
}

TEST(WindowsRuntime, HasTheSameWhiteSpace) {
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

// Decodes UTF-8 with the system. False: it rejects the octets.
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

// The system counts in int. The octets are never read.
TEST(WindowsRuntime, IsNotCalledForMoreOctetsThanItCanCount) {
    std::wstring text = L"leftover";
    DecodeAnsi(std::string_view("x", size_t{INT_MAX} + 1), text);
    EXPECT_EQ(text, L"");
}

TEST(WindowsRuntime, DecodesEmptyInputToEmptyText) {
    std::wstring text = L"leftover";
    DecodeAnsi({}, text);
    EXPECT_EQ(text, L"");
}

}  // namespace
