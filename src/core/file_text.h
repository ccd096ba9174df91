// The octets of the data files. Two rules look like accidents and are the file format that every reader of
// log.txt and SNMP.txt relies on: one octet a character, and a carriage return put before each line feed even
// though the program ends its lines with CR LF itself, so that a line on disk ends in 0D 0D 0A.
// Pure functions of their arguments.
#pragma once

#include <string>
#include <string_view>

// Replaces `octets` by `text` as the data files hold it.
// Kept: the first character above 0xFF ends the output, since one octet cannot hold it; what follows is lost.
void EncodeFileText(std::wstring_view text, std::string& octets);

// Appends `text` in that form, with CR LF added when it is not empty and does not end in a line feed. The
// question is asked of the text, the cut applies to the whole: a cut text gets no line end, and the next one
// continues its line. Throws std::bad_alloc with `octets` as they were.
void AppendFileLines(std::wstring_view text, std::string& octets);

// Replaces `text` by the characters of `octets`, each octet one character: CR LF becomes LF, a CR alone
// stays, 0x1A ends the content.
void DecodeFileText(std::string_view octets, std::wstring& text);
