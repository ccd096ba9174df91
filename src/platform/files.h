// File operations. Each call opens, uses and closes its file, and lets other programs read, write and delete
// it meanwhile. Paths are wide text with backslashes. Nothing here locks: FileLock in core/data_files.h
// guards the data files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Appends `octets` to the file and creates it if it is missing, even if `octets` is empty. False: nothing was
// written, because the file could not be opened or the disk is full. If the disk fills up during the write,
// the octets that fitted remain in the file, and the result is true.
bool AppendOctets(const std::wstring& path, std::string_view octets);

// Creates the file or empties it, hidden or not, then writes `octets`. False: it could not be opened or
// emptied, and is unchanged.
//
// Intentional: also true if the disk fills up during the write, since the old content is lost already.
bool ReplaceOctets(const std::wstring& path, std::string_view octets);

// Replaces `octets` with the file's content from `offset` on, at most `maxCount` octets. An offset beyond the
// end reads from the start. Returns the size that the file had when it was opened; nothing, with `octets`
// empty, if it could not be opened or read. May throw std::bad_alloc.
std::optional<uint64_t> ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets,
                                       uint64_t maxCount = UINT64_MAX);

// Returns the file's size in octets without opening the file; nothing if it does not exist.
std::optional<uint64_t> QueryFileSize(const std::wstring& path);

// Copies `source` to `target` and replaces an existing file, even one that is hidden, system or read-only.
// The copy has none of these attributes, because Windows would refuse to replace or remove it. False: the
// source or the target could not be opened, and the target is unchanged; or the disk is full, and the target
// is truncated or missing.
bool CopyFileOver(const std::wstring& source, const std::wstring& target);

// Removes the file, even if it is read-only. True: it does not exist any more, even if another program
// removed it. False: it could not be removed and is unchanged.
bool RemoveFile(const std::wstring& path);
