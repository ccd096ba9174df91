// Definitions from MIB files. A line scanner that knows three keywords and values in braces after "::=".
// Intentional: what it makes of everything else in a MIB shows in the trap records and is tested.
#pragma once

#include <string>
#include <string_view>

// Stores the definitions of one file in the tables of mib/name_store.h. A file that cannot be read adds
// nothing. May throw std::bad_alloc. Caller holds MibStoreLock.
void ParseMibFile(const std::wstring& path);

// The same for a file's text. Time and memory are linear in its length, whatever it contains.
//
// Lines end at line feeds only, and lose their comment. A line that begins, white space aside, with an
// identifier and contains "OBJECT IDENTIFIER", "OBJECT-TYPE" or "MODULE-IDENTITY" makes the identifier the
// current name. A line that contains "::=" and "{" starts a value, which extends to the first "}", over
// further lines if need be; those are not examined otherwise. The value is stored under the current name: as
// a pending definition when it ends in a parent and a number, else directly when all of it can be read.
// Intentional: the current name stays until the next keyword line, so a value that another construct defines
// replaces the one before it ("FooEntry ::= SEQUENCE {" that of fooEntry); a keyword counts in an import
// list, a description and "SYNTAX OBJECT IDENTIFIER" too.
void ParseMibText(std::wstring_view text);
