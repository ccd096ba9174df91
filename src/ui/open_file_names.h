// Parses the buffer that the file dialog fills.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct ChosenFile {
    std::wstring path;
    std::wstring name;  // last component of the path
};

struct ChosenFiles {
    bool several = false;  // a multiple selection, even if only one name follows the folder
    std::vector<ChosenFile> files;
};

// Returns the files in `buffer`, which contains zero-terminated texts up to an empty one or the end of the
// buffer. A single text is a full path. Otherwise the first is a folder and the others are names in it;
// folder and name are joined by a backslash even if the folder ends in one.
ChosenFiles ParseOpenFileNames(std::wstring_view buffer);
