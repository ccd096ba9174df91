// The text that a viewer shows, as pure functions. It differs from the text read from the file in only two
// points, both because of the limits of the edit control.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Returns the text for the view:
// - Each character 0 becomes a blank. The control would end its text at the first one, and a power cut can
//   leave runs of them in the file.
// - A line of more than 1,000 characters, including its line end, is split into lines of 100, which fit into
//   the view. A line ends at CR LF; a line feed alone is an ordinary character, as it is for the control. The
//   control's layout time is at least quadratic in the length of a line, and one datagram can cause a line of
//   260,000 characters. The limit bounds that: a view full of lines just below it is laid out in about two
//   seconds.
// Each text is split on its own: a line that arrives in two texts counts as two.
std::wstring BuildViewText(std::wstring_view fileText);

// Returns the sentence, with a line end, that is shown instead of a file of `size` octets that is too large.
std::wstring BuildTooLargeText(uint64_t size);
