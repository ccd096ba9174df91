// MIB definitions made from numbers: place 0, 1, 2... have different names and identifiers.
#pragma once

#include <cstddef>
#include <string>

// The identifier of a place, such as "1.3.6.1.4.1.7.12.3".
std::wstring SampleOid(size_t place);

// Fills the name store with a name for each of the first `names` places; empties it again.
void FillNameStore(size_t names);
void EmptyNameStore();

// A MIB file with `definitions` definitions, as vendors write them: a MODULE-IDENTITY, then tables of objects
// with descriptions. `number` makes the files of a folder different.
std::string MakeMibText(size_t number, size_t definitions);
