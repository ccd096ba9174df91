#include "tests/desktop/request.h"

namespace {

wchar_t UnitFromHex(std::string_view digits) {
    return static_cast<wchar_t>(std::stoul(std::string(digits), nullptr, 16));
}

std::wstring Unescape(std::string_view field) {
    std::wstring text;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 5 < field.size()) {
            text += UnitFromHex(field.substr(i + 2, 4));
            i += 5;
        } else {
            text += static_cast<wchar_t>(static_cast<unsigned char>(field[i]));
        }
    }
    return text;
}

}  // namespace

const std::wstring& Request::Text(size_t index) const {
    if (index >= arguments.size()) {
        throw RequestError(verb + ": argument " + std::to_string(index + 1) + " is missing");
    }
    return arguments[index];
}

long long Request::Number(size_t index) const {
    try {
        return std::stoll(Text(index));
    } catch (const std::logic_error&) {
        throw RequestError(verb + ": argument " + std::to_string(index + 1) + " is not a number");
    }
}

HWND Request::Window(size_t index) const {
    const HWND window = reinterpret_cast<HWND>(static_cast<INT_PTR>(Number(index)));
    if (IsWindow(window) == FALSE) {
        throw RequestError(verb + ": no such window");
    }
    return window;
}

Request ParseRequest(std::string_view line) {
    Request request;
    size_t end = line.find('\t');
    request.verb = line.substr(0, end);
    while (end != std::string_view::npos) {
        const size_t begin = end + 1;
        end = line.find('\t', begin);
        request.arguments.push_back(Unescape(line.substr(begin, end - begin)));
    }
    return request;
}
