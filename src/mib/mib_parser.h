// Definitions out of MIB files. A line scanner that knows three keywords and values in braces behind "::=";
// what it makes of everything else in a MIB shows in the trap records, so its oddities are kept and tested.
#pragma once

#include <string>
#include <string_view>

// Stores the definitions of one file in the tables of mib/name_store.h. A file that cannot be read adds
// nothing. May throw std::bad_alloc. Caller holds MibStoreLock.
void ParseMibFile(const std::wstring& path);

// The same for a file's text. The scan is linear in its length; what a value read in full stands for can be
// as long as all such values before it together, when each builds on the last.
//
// Lines end at line feeds only, and lose their comment and the white space around them. A line that begins
// with an identifier and holds "OBJECT-TYPE", "OBJECT IDENTIFIER" or "MODULE-IDENTITY" makes the identifier
// the current name. A line that holds "::=" and "{" starts a value, which extends to the first "}", if need
// be over further lines; those are not looked at otherwise. The value from its first "{" to its first "}" is
// stored under the current name: in PendingDefinitions when it ends in a parent and a number, else directly
// when it can be read in full. Kept: the current name stays until the next keyword line, so a value that
// another construct defines replaces the one before it ("FooEntry ::= SEQUENCE {" that of fooEntry); a
// keyword counts in an import list, a description and "SYNTAX OBJECT IDENTIFIER" too.
void ParseMibText(std::wstring_view text);

// The same for a text of ASCII characters alone, which nearly all MIB files are: the lines that matter are
// few, and making only what they hold wide halves the time of a load.
void ParseMibText(std::string_view text);
