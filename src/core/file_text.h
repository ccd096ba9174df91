// Encodes and decodes the text of the data files. Pure functions.
//
// Two rules look like bugs but are the file format that every reader of log.txt and SNMP.txt relies on: each
// character is one octet, and a CR is written before each line feed although the program already ends its
// lines with CR LF. A line on disk therefore ends in 0D 0D 0A.
#pragma once

#include <string>
#include <string_view>

// Replaces `octets` with `text` in this format.
//
// Intentional, since one octet cannot represent it: the first character above 0xFF ends the output, and the
// rest of `text` is lost.
void EncodeFileText(std::wstring_view text, std::string& octets);

// Appends `text` in this format, and a line end if `text` is not empty and does not end in a line feed. Text
// that is cut at a character above 0xFF gets no line end, so the next text continues its line. May throw
// std::bad_alloc, with part of the text appended.
void AppendFileLines(std::wstring_view text, std::string& octets);

// Replaces `text` with the decoded octets, one character for each. CR LF becomes LF, a CR alone is unchanged,
// and 0x1A ends the content.
void DecodeFileText(std::string_view octets, std::wstring& text);
