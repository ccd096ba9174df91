#include "ui/open_file_names.h"

namespace {

// Takes the text up to the next zero off the front of `rest`, the zero included.
std::wstring_view TakeText(std::wstring_view& rest) {
    const std::wstring_view text = rest.substr(0, rest.find(L'\0'));
    rest.remove_prefix(text.size() < rest.size() ? text.size() + 1 : rest.size());
    return text;
}

std::wstring_view LastComponent(std::wstring_view path) {
    const size_t separator = path.find_last_of(L"\\/");
    return separator == std::wstring_view::npos ? path : path.substr(separator + 1);
}

}  // namespace

ChosenFiles ParseOpenFileNames(std::wstring_view buffer) {
    ChosenFiles chosen;
    const std::wstring first(TakeText(buffer));
    for (std::wstring_view name = TakeText(buffer); !name.empty(); name = TakeText(buffer)) {
        chosen.files.push_back({first + L'\\' + std::wstring(name), std::wstring(name)});
    }
    chosen.several = !chosen.files.empty();
    if (!chosen.several) {
        chosen.files.push_back({first, std::wstring(LastComponent(first))});
    }
    return chosen;
}
