// MIB files as text: reading one, cleaning a line, and the two readings of a value in braces. A scanner's
// tools, not a grammar's: nothing here reports an error, malformed text gives false or empty results.
// White space is what IsWideSpace says (core/decimal_text.h). Results that are views point into the argument.
// What is a template takes wide text and ASCII.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// A file's text: its octets when they are all ASCII, which makes them the text as it is, else wide.
using MibText = std::variant<std::string, std::wstring>;

// The whole file, as UTF-8 or else the ANSI code page; empty when it cannot be read or holds 2 GiB or more.
// Kept: a byte-order mark stays in front as U+FEFF, and a UTF-16 file is read octet by octet and
// means nothing.
MibText ReadMibText(const std::wstring& path);

// The same for octets that were read already, fewer than 2 GiB.
MibText DecodeMibText(std::string octets);

// The line up to its first "--".
// Kept: also when that stands in a quoted text, and a second "--" does not end the comment.
template <typename Char>
std::basic_string_view<Char> StripComment(std::basic_string_view<Char> line);

// The text without the white space at both its ends.
template <typename Char>
std::basic_string_view<Char> TrimSpace(std::basic_string_view<Char> text);

// The letters, digits, "-" and "_" that the line begins with after white space; empty for any other start.
template <typename Char>
std::basic_string_view<Char> LeadingIdentifier(std::basic_string_view<Char> line);

// What stands strictly between the first "{" and the first "}", trimmed: true and *inner. False, *inner
// untouched: one is missing or the "}" comes first.
bool FindBracedText(std::wstring_view statement, std::wstring_view* inner);

// The short form "{ parent subId }". True: *parent is the last but one word in the braces, *subId the last
// one as ParseDecimalInt reads it. False: no braces or fewer than two words (*parent empty, *subId -1), or a
// negative number.
// Kept: words before those two are not looked at and a last word that is no number is 0, so that
// { iso org(3) dod(6) internet(1) } is 0 below "dod(6)", a parent that never resolves.
bool ParseParentAndSubId(std::wstring_view statement, std::wstring_view* parent, int32_t* subId);

// Adds what one word of a value means to the arcs before it: "org(3)" and "3" give an arc; a name gives the
// arcs it stands for if it comes first and is known, else nothing. Caller holds MibStoreLock.
void AddOidComponent(std::wstring_view word, std::vector<int32_t>& arcs);

// The full reading of "{ word word ... }": dotted text, or empty when there are no braces or fewer than two
// arcs. Caller holds MibStoreLock.
std::wstring ParseOidValue(std::wstring_view statement);
