// The time stamps in the program's files.
#pragma once

#include <cstddef>
#include <string_view>

constexpr size_t kStampLength = 23;

// Whether `text` is a stamp such as "2026-03-07 09:05:02.047".
inline bool IsStamp(std::string_view text) {
    constexpr std::string_view kShape = "dddd-dd-dd dd:dd:dd.ddd";
    if (text.size() != kShape.size()) {
        return false;
    }
    for (size_t index = 0; index < kShape.size(); ++index) {
        const bool digit = text[index] >= '0' && text[index] <= '9';
        if (kShape[index] == 'd' ? !digit : text[index] != kShape[index]) {
            return false;
        }
    }
    return true;
}
