// Definitions out of MIB files. A line scanner that knows three keywords and values in braces behind "::="; what
// it makes of everything else in a MIB is part of what the program shows, so its oddities are kept and tested.
#pragma once

#include <string>
#include <string_view>

// Stores the definitions of one file in the tables of mib/name_store.h. A file that cannot be read adds
// nothing. May throw std::bad_alloc. Caller holds MibStoreLock.
void ParseMibFile(const std::wstring& path);

// The same for a file's text. Time and memory are linear in its length.
//
// A line that holds a keyword and begins with an identifier makes that the current name. A line that holds "::="
// and "{" starts a value, which ends with the first "}" in this line or a later one; lines taken for that are
// not looked at otherwise. A value is stored under the current name.
// Kept: the current name stays until the next keyword line, so what other constructs define replaces the
// definition before them; an import list, a SYNTAX line or a description can set a name too; and so a
// "FooEntry ::= SEQUENCE {" replaces FooEntry's own definition when that was the last one.
void ParseMibText(std::wstring_view text);
