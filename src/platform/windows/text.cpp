#include "platform/text.h"

#include <limits>

#include "platform/windows/windows_headers.h"

void DecodeAnsi(std::string_view octets, std::wstring& text) {
    if (octets.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        text.clear();
        return;
    }
    const int size = static_cast<int>(octets.size());
    // No ANSI code page decodes to more wide characters than there are octets.
    text.resize(octets.size());
    const int length =
        octets.empty() ? 0 : MultiByteToWideChar(CP_ACP, 0, octets.data(), size, text.data(), size);
    text.resize(static_cast<size_t>(length));
}

bool EncodeAnsi(const std::wstring& text, std::string& octets) {
    const int size = WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return false;
    }
    octets.resize(static_cast<size_t>(size));
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, octets.data(), size, nullptr, nullptr);
    octets.resize(octets.size() - 1);  // without the terminating zero
    return true;
}
