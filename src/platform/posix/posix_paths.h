// Paths cross the seam as wide text with backslashes; the system wants UTF-8 with slashes.
#pragma once

#include <climits>
#include <cstddef>
#include <string_view>

// A path as the system wants it: UTF-8 of wide text with 32-bit characters, a surrogate or anything above
// U+10FFFF as U+FFFD. Held in place, so that opening a file asks for no memory, as on Windows. Longer than
// the system takes: empty, and nothing has that path.
class PosixPath {
  public:
    explicit PosixPath(std::wstring_view path);

    const char* c_str() const { return octets_; }
    std::string_view View() const { return {octets_, size_}; }

  private:
    char octets_[PATH_MAX];
    size_t size_ = 0;
};
