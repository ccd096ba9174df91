// MIB files as text: reading one, cleaning a line, and the two readings of a value in braces. A scanner's
// tools, not a grammar's: nothing here reports an error, malformed text gives false or empty results.
// White space is what IsWideSpace says (core/white_space.h). Results that are views point into the argument.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mib/name_store.h"

// The whole file, as UTF-8 or else the ANSI code page; empty when it cannot be read or has 2 GiB or more.
// Intentional: a byte-order mark stays at the start as U+FEFF, and a UTF-16 file is read octet by octet and
// means nothing.
std::wstring ReadMibText(const std::wstring& path);

// The line up to its first "--".
// Intentional: also when that is in a quoted text, and a second "--" does not end the comment.
std::wstring_view StripComment(std::wstring_view line);

// The letters, digits, "-" and "_" that the line begins with after white space; empty for any other start.
std::wstring_view LeadingIdentifier(std::wstring_view line);

// The short form "{ parent subId }": the words between the first "{" and the first "}". True: *parent is the
// last but one of them, *subId the last one as ParseDecimalInt reads it. False: fewer than two words or no
// such braces (*parent empty, *subId -1), or a negative number.
// Intentional: the words before those two are ignored and a last word that is no number is 0, so that
// { iso org(3) dod(6) internet(1) } is 0 below "dod(6)", a parent that never resolves.
bool ParseParentAndSubId(std::wstring_view statement, std::wstring_view* parent, int32_t* subId);

// What `oid` becomes by one more word of a value: "org(3)" and "3" append an arc; a name that comes first and
// is known stands for its identifier; anything else changes nothing. The word is not empty and has no white
// space. Caller holds MibStoreLock.
const Oid* AddOidComponent(std::wstring_view word, const Oid* oid);

// The full reading of "{ word word ... }"; null when that gives fewer than two arcs. Caller holds
// MibStoreLock. May throw std::bad_alloc, as all of these.
const Oid* ParseOidValue(std::wstring_view statement);
