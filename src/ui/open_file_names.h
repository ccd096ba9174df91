// What the file-open dialog leaves in its buffer, taken apart.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct ChosenFile {
    std::wstring path;  // where it stands
    std::wstring name;  // last component of the path
};

struct ChosenFiles {
    bool several = false;  // chosen as a multiple selection, even if only one name followed the folder
    std::vector<ChosenFile> files;
};

// `buffer` holds zero-terminated texts, ended by an empty one or by the buffer's end. One text is a full
// path; with more, the first is the folder and the others are names in it, joined to it by a backslash
// whatever it ends in.
ChosenFiles ParseOpenFileNames(std::wstring_view buffer);
