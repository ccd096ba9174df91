#include "tests/desktop/json_text.h"

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

void AppendEscape(std::string& json, wchar_t unit) {
    json += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        json += kHexDigits[(static_cast<unsigned>(unit) >> shift) & 15u];
    }
}

}  // namespace

std::string JsonText(std::wstring_view text) {
    std::string json = "\"";
    json.reserve(text.size() + 2);
    for (const wchar_t unit : text) {
        if (unit >= L' ' && unit <= L'~' && unit != L'"' && unit != L'\\') {
            json += static_cast<char>(unit);
        } else {
            AppendEscape(json, unit);
        }
    }
    return json + "\"";
}

std::string JsonNumber(int64_t number) {
    return std::to_string(number);
}

std::string JsonBool(bool value) {
    return value ? "true" : "false";
}

std::string JsonList(const std::vector<std::string>& values) {
    std::string json = "[";
    for (const std::string& value : values) {
        if (json.size() > 1) {
            json += ',';
        }
        json += value;
    }
    return json + "]";
}

JsonObject& JsonObject::Add(std::string_view key, std::string_view value) {
    if (!pairs_.empty()) {
        pairs_ += ',';
    }
    pairs_ += '"';
    pairs_ += key;
    pairs_ += "\":";
    pairs_ += value;
    return *this;
}
