// One request line of the driver: a verb and its arguments, separated by tabs. ASCII; a character that is not
// plain comes as \uXXXX (the backslash too).
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/windows/windows_headers.h"

// Ends the request; its text becomes the reply's "error".
class RequestError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Request {
    std::string verb;
    std::vector<std::wstring> arguments;

    // These throw RequestError when the argument is missing or is not what is asked for.
    const std::wstring& Text(size_t index) const;
    long long Number(size_t index) const;
    // A handle of a window that exists.
    HWND Window(size_t index) const;
};

Request ParseRequest(std::string_view line);
