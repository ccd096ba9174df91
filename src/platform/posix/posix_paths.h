// Converts paths: portable code uses wide text with backslashes, the system UTF-8 with slashes.
#pragma once

#include <climits>
#include <cstddef>
#include <string_view>

// A path for the system, in UTF-8. Surrogates and characters above U+10FFFF become U+FFFD. A path that is
// longer than the system allows becomes empty, which no file matches. Allocates no memory, so that opening a
// file does not either, as on Windows.
class PosixPath {
  public:
    explicit PosixPath(std::wstring_view path);

    const char* c_str() const { return octets_; }
    std::string_view View() const { return {octets_, size_}; }

  private:
    char octets_[PATH_MAX];
    size_t size_ = 0;
};
