// What the MIB files taught: names for numeric object identifiers. (Tables and resolution: see below.)
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

// Guards the three tables. Held for a whole load (with the log line at its end), for one lookup, or for reading
// the count. Lock order: MibStoreLock before FileLock (core/data_files.h), never the other way.
extern std::mutex MibStoreLock;

// Replaces `name` by the name stored for exactly this dotted identifier, or empties it. No prefix search: an
// instance suffix such as ".0" makes another identifier. Takes MibStoreLock for the lookup and the copy.
void LookupOidName(std::wstring_view oid, std::wstring& name);

// The number of identifiers that have a name, low 32 bits. Takes MibStoreLock.
int32_t CountOidNames();
