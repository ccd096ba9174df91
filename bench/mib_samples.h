// Generated MIB definitions. Those of different indices have different names and identifiers.
#pragma once

#include <cstddef>
#include <string>

// Such as "1.3.6.1.4.1.7.12.3".
std::wstring SampleOid(size_t index);

// Fills the name store with names for the first `names` indices; empties it.
void FillNameStore(size_t names);
void EmptyNameStore();

// A MIB file with `definitions` definitions, as vendors write them: a MODULE-IDENTITY, then tables of objects
// with descriptions. Files with different numbers define different names.
std::string MakeMibText(size_t number, size_t definitions);
