// What a viewer shows of its file, as pure functions. The view differs from the file in two points only, both
// because of the edit control that shows it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The text for the view:
// - Characters 0 become blanks. The control ends its text at the first one, and a power cut leaves runs
//   of them.
// - A line of more than 1,000 characters, its end included, is broken into lines of 100, which fit into the
//   view. The control needs time that grows with the square of a line's length or faster, and a datagram can
//   bring a line of 260,000.
std::wstring BuildViewText(std::wstring_view fileText);

// The sentence shown instead of a file of `size` octets that does not fit into the view, with its line end.
std::wstring BuildTooLargeText(uint64_t size);
