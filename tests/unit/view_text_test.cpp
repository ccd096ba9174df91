#include "ui/view_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::wstring Line(size_t length) {
    std::wstring line;
    while (line.size() < length) {
        line += L"0123456789";
    }
    line.resize(length);
    return line;
}

TEST(BuildViewText, OrdinaryTextIsUnchanged) {
    for (const std::wstring& text :
         {std::wstring(), std::wstring(L"one"), std::wstring(L"one\r\r\ntwo\r\nthree\n\n\rfour\r"),
          std::wstring(L"\r\r\n"), Line(1000), Line(997) + L"\r\r\n" + Line(998) + L"\r\n" + Line(1000),
          Line(499) + L"\n" + Line(500)}) {
        EXPECT_EQ(BuildViewText(text), text);
    }
}

TEST(BuildViewText, ZerosBecomeBlanks) {
    EXPECT_EQ(BuildViewText(std::wstring(L"\0one\0\0two\n\0", 11)), L" one  two\n ");
}

// The lines of a text without their line ends.
std::vector<std::wstring> SplitLines(const std::wstring& text) {
    std::vector<std::wstring> lines(1);
    for (const wchar_t character : text) {
        if (character == L'\n') {
            lines.emplace_back();
        } else if (character != L'\r') {
            lines.back() += character;
        }
    }
    return lines;
}

TEST(BuildViewText, LongLinesAreSplitWithoutLosingACharacter) {
    for (const size_t length :
         {1001U, 1002U, 1097U, 1098U, 1099U, 1100U, 1101U, 1102U, 1103U, 1104U, 260000U}) {
        for (const std::wstring end : {L"", L"\r\n", L"\r\r\n"}) {
            const std::wstring line = Line(length);
            const std::wstring text = BuildViewText(L"before\r\n" + line + end);
            EXPECT_TRUE(text.ends_with(line.substr(line.size() - 1) + end)) << length;
            std::vector<std::wstring> lines = SplitLines(text);
            EXPECT_EQ(lines.front(), L"before");
            if (!end.empty()) {
                EXPECT_EQ(lines.back(), L"");
                lines.pop_back();
            }
            std::wstring joined;
            for (size_t index = 1; index < lines.size(); ++index) {
                EXPECT_LE(lines[index].size(), 103U);
                EXPECT_FALSE(lines[index].empty());
                joined += lines[index];
            }
            EXPECT_TRUE(joined == line) << length;
        }
    }
}

// The edit control does not break a line at a lone line feed, which another program may write.
TEST(BuildViewText, LoneLineFeedsDoNotEndALine) {
    const std::wstring text = Line(600) + L"\n" + Line(600) + L"\n";
    std::wstring joined = BuildViewText(text);
    EXPECT_EQ(joined.find(L"\r\n"), 100U);
    for (size_t end = joined.find(L"\r\n"); end != std::wstring::npos; end = joined.find(L"\r\n")) {
        joined.erase(end, 2);
    }
    EXPECT_EQ(joined, text);
}

TEST(BuildViewText, TheLimitIncludesTheLineEnd) {
    EXPECT_NE(BuildViewText(Line(1001)), Line(1001));
    EXPECT_NE(BuildViewText(Line(998) + L"\r\r\n"), Line(998) + L"\r\r\n");
}

TEST(BuildTooLargeText, IsOneSentenceWithTheSize) {
    EXPECT_EQ(BuildTooLargeText(5368709120),
              L"This file is too large to be shown (5368709120 bytes); only what is added to it will appear "
              L"below.\r\n");
}

}  // namespace
