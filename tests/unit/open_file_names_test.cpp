#include "ui/open_file_names.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

struct Case {
    std::wstring_view texts;
    const wchar_t* files;  // "path|name; path|name", after "several: " for a multiple selection
    const char* why;
};

const Case kCases[] = {
    {L"C:\\mibs\\IF-MIB.txt"sv, L"C:\\mibs\\IF-MIB.txt|IF-MIB.txt; ", "one text is a full path"},
    {L"C:/mibs\\net/a.my"sv, L"C:/mibs\\net/a.my|a.my; ", "the name follows the last slash"},
    {L"C:/mibs/net\\a.my"sv, L"C:/mibs/net\\a.my|a.my; ", "or the last backslash"},
    {L"a.mib"sv, L"a.mib|a.mib; ", "a name alone"},
    {L"C:\\mibs\0a.mib\0b with blank.txt\0c.my"sv,
     L"several: C:\\mibs\\a.mib|a.mib; C:\\mibs\\b with blank.txt|b with blank.txt; C:\\mibs\\c.my|c.my; ",
     "several texts are a folder and its names"},
    {L"C:\\mibs\0a.mib"sv, L"several: C:\\mibs\\a.mib|a.mib; ", "also with one name only"},
    {L"C:\\\0a.mib"sv, L"several: C:\\\\a.mib|a.mib; ", "the root of a drive has its own backslash"},
    {L"C:\\mibs\0a.mib\0\0stale.mib"sv, L"several: C:\\mibs\\a.mib|a.mib; ", "an empty text ends the names"},
    {L"C:\\a.mib\0\0stale.mib"sv, L"C:\\a.mib|a.mib; ", "or the single file"},
    {L""sv, L"|; ", "an empty buffer is one file without a name"},
};

std::wstring Flatten(const ChosenFiles& chosen) {
    std::wstring text = chosen.several ? L"several: " : L"";
    for (const auto& file : chosen.files) {
        text += file.path + L"|" + file.name + L"; ";
    }
    return text;
}

TEST(OpenFileNames, OneTextIsAPathAndSeveralAreAFolderAndItsNames) {
    for (const Case& row : kCases) {
        EXPECT_EQ(Flatten(ParseOpenFileNames(row.texts)), row.files)
            << row.why << ", at the end of its buffer";
        std::wstring buffer(row.texts);
        buffer.resize(8192, L'\0');
        EXPECT_EQ(Flatten(ParseOpenFileNames(buffer)), row.files) << row.why;
    }
}

}  // namespace
