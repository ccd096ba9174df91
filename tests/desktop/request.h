// One request line of the driver: a verb and its arguments, separated by tabs. ASCII; all other characters
// and the backslash are written as \uXXXX.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/windows/windows_headers.h"

// Its text becomes the reply's "error".
class RequestError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Request {
    std::string verb;
    std::vector<std::wstring> arguments;

    // These throw RequestError if the argument is missing or invalid.
    const std::wstring& Text(size_t index) const;
    long long Number(size_t index) const;
    // The handle of an existing window.
    HWND Window(size_t index) const;
};

Request ParseRequest(std::string_view line);
