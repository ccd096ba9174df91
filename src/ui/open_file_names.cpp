#include "ui/open_file_names.h"

#include <algorithm>

ChosenFiles ParseOpenFileNames(std::wstring_view buffer) {
    std::vector<std::wstring> texts;
    do {
        texts.emplace_back(buffer.substr(0, buffer.find(L'\0')));
        buffer.remove_prefix(std::min(texts.back().size() + 1, buffer.size()));
    } while (!buffer.empty() && buffer.front() != L'\0');

    const std::wstring& first = texts.front();
    ChosenFiles chosen;
    chosen.several = texts.size() > 1;
    if (!chosen.several) {
        chosen.files.push_back({first, first.substr(first.find_last_of(L"\\/") + 1)});
    }
    for (size_t index = 1; index < texts.size(); ++index) {
        chosen.files.push_back({first + L'\\' + texts[index], texts[index]});
    }
    return chosen;
}
