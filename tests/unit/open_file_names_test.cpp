#include "ui/open_file_names.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

// The texts as the dialog leaves them: in a buffer of its full size, zeros behind them.
ChosenFiles ParseInDialogBuffer(std::wstring_view texts) {
    std::wstring buffer(texts);
    buffer.resize(8192, L'\0');
    return ParseOpenFileNames(buffer);
}

TEST(OpenFileNames, OneTextIsAFullPath) {
    const ChosenFiles chosen = ParseInDialogBuffer(L"C:\\mibs\\IF-MIB.txt");
    EXPECT_FALSE(chosen.several);
    ASSERT_EQ(chosen.files.size(), 1u);
    EXPECT_EQ(chosen.files[0].path, L"C:\\mibs\\IF-MIB.txt");
    EXPECT_EQ(chosen.files[0].name, L"IF-MIB.txt");
}

TEST(OpenFileNames, NameFollowsTheLastSeparatorOfEitherKind) {
    EXPECT_EQ(ParseInDialogBuffer(L"C:/mibs\\net/a.my").files[0].name, L"a.my");
    EXPECT_EQ(ParseInDialogBuffer(L"C:/mibs/net\\a.my").files[0].name, L"a.my");
    EXPECT_EQ(ParseInDialogBuffer(L"C:\\a.mib").files[0].name, L"a.mib");
    EXPECT_EQ(ParseInDialogBuffer(L"a.mib").files[0].name, L"a.mib");
}

TEST(OpenFileNames, SeveralTextsAreAFolderAndItsNames) {
    const ChosenFiles chosen = ParseInDialogBuffer(L"C:\\mibs\0a.mib\0b with blank.txt\0c.my"sv);
    EXPECT_TRUE(chosen.several);
    ASSERT_EQ(chosen.files.size(), 3u);
    EXPECT_EQ(chosen.files[0].path, L"C:\\mibs\\a.mib");
    EXPECT_EQ(chosen.files[0].name, L"a.mib");
    EXPECT_EQ(chosen.files[1].path, L"C:\\mibs\\b with blank.txt");
    EXPECT_EQ(chosen.files[1].name, L"b with blank.txt");
    EXPECT_EQ(chosen.files[2].path, L"C:\\mibs\\c.my");
    EXPECT_EQ(chosen.files[2].name, L"c.my");
}

TEST(OpenFileNames, FolderWithOneNameIsStillAMultipleSelection) {
    const ChosenFiles chosen = ParseInDialogBuffer(L"C:\\mibs\0a.mib"sv);
    EXPECT_TRUE(chosen.several);
    ASSERT_EQ(chosen.files.size(), 1u);
    EXPECT_EQ(chosen.files[0].path, L"C:\\mibs\\a.mib");
}

TEST(OpenFileNames, DriveRootKeepsItsOwnBackslash) {
    EXPECT_EQ(ParseInDialogBuffer(L"C:\\\0a.mib\0b.mib"sv).files[0].path, L"C:\\\\a.mib");
}

TEST(OpenFileNames, WhatFollowsTheEmptyTextIsIgnored) {
    EXPECT_EQ(ParseInDialogBuffer(L"C:\\mibs\0a.mib\0\0stale.mib"sv).files.size(), 1u);
    const ChosenFiles single = ParseInDialogBuffer(L"C:\\mibs\\a.mib\0\0stale.mib"sv);
    EXPECT_FALSE(single.several);
    EXPECT_EQ(single.files.size(), 1u);
}

TEST(OpenFileNames, TextsMayReachTheEndOfTheBuffer) {
    EXPECT_EQ(ParseOpenFileNames(L"C:\\a.mib"sv).files[0].path, L"C:\\a.mib");
    const ChosenFiles chosen = ParseOpenFileNames(L"C:\\mibs\0a.mib\0b.mib"sv);
    ASSERT_EQ(chosen.files.size(), 2u);
    EXPECT_EQ(chosen.files[1].name, L"b.mib");
}

TEST(OpenFileNames, EmptyBufferIsOneFileWithoutAName) {
    for (const std::wstring_view buffer : {L""sv, L"\0"sv, L"\0\0"sv}) {
        const ChosenFiles chosen = ParseOpenFileNames(buffer);
        EXPECT_FALSE(chosen.several);
        ASSERT_EQ(chosen.files.size(), 1u);
        EXPECT_EQ(chosen.files[0].path, L"");
        EXPECT_EQ(chosen.files[0].name, L"");
    }
}

}  // namespace
