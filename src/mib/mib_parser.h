// Reads name definitions from MIB files with a line scanner that knows three keywords and values in braces
// after "::=".
//
// Intentional: it is not an ASN.1 parser. Its results for all other constructs appear in trap records, so
// they are tested and must not change.
#pragma once

#include <string>
#include <string_view>

// Stores the definitions of one file in the tables of mib/name_store.h. Does nothing if the file cannot be
// read. May throw std::bad_alloc. The caller must hold MibStoreLock.
void ParseMibFile(const std::wstring& path);

// Stores the definitions in a file's text. Time and memory are linear in its length, whatever it contains.
// May throw std::bad_alloc. The caller must hold MibStoreLock.
//
// - Lines end at line feeds only. Comments are removed first.
// - A line that begins with an identifier (after white space) and contains "OBJECT IDENTIFIER",
//   "OBJECT-TYPE" or "MODULE-IDENTITY" makes that identifier the current name.
// - A line that contains "::=" and "{" starts a value, which ends at the first "}". Further lines of a value
//   are not scanned for anything else.
// - The value belongs to the current name. It is stored as a pending definition if it ends in a parent and a
//   number, otherwise as an identifier if it can be read in full.
//
// Intentional: the current name does not change until the next keyword line, so a later value replaces its
// value, whatever construct the later one belongs to. For example, "FooEntry ::= SEQUENCE {" replaces the
// value of fooEntry. Keywords also count in import lists, in descriptions and in "SYNTAX OBJECT IDENTIFIER".
void ParseMibText(std::wstring_view text);
