// The text functions of the MIB scanner: reading a file, splitting a line, and the two ways to read a value
// in braces. They report no errors: malformed text gives false, null or empty results. White space is defined
// by IsWideSpace in core/white_space.h. Returned views point into the argument. All functions that allocate
// may throw std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mib/name_store.h"

// Returns the whole file, decoded as UTF-8 or, if it is not valid UTF-8, with the ANSI code page; empty if it
// cannot be read or has 2 GiB or more.
//
// Intentional: encodings are not detected. A byte-order mark remains as U+FEFF, and a UTF-16 file decodes to
// text without definitions.
std::wstring ReadMibText(const std::wstring& path);

// Returns the line up to its first "--".
//
// Intentional: a "--" in quoted text counts too, and a second "--" does not end the comment.
std::wstring_view StripComment(std::wstring_view line);

// Returns the letters, digits, "-" and "_" at the start of the line, after white space; empty if there are
// none.
std::wstring_view LeadingIdentifier(std::wstring_view line);

// Reads the short form "{ parent subId }" from the words between the first "{" and the first "}". True:
// *parent is the last word but one, and *subId is the last word as ParseDecimalInt reads it. False: there are
// fewer than two words or no braces (*parent is empty, *subId is -1), or *subId is negative.
//
// Intentional: words before these two are ignored, and a last word that is not a number is 0. For example,
//   { iso org(3) dod(6) internet(1) }
// is 0 below "dod(6)", a parent that never resolves.
bool ParseParentAndSubId(std::wstring_view statement, std::wstring_view* parent, int32_t* subId);

// Returns `oid` (null: no arcs yet) extended by one word of a value. "org(3)" and "3" append an arc. If `oid`
// is null, a name is resolved to its identifier, or to null if it is unknown. Any other word leaves `oid`
// unchanged. `word` must not be empty or contain white space. The caller must hold MibStoreLock.
const Oid* AddOidComponent(std::wstring_view word, const Oid* oid);

// Reads the full form "{ word word ... }" word by word. Returns null if the result has fewer than two arcs.
// The caller must hold MibStoreLock.
const Oid* ParseOidValue(std::wstring_view statement);
