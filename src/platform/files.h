// Files as whole operations: each call opens, works and closes, and leaves no handle behind. Paths are wide
// texts with backslashes. Files are opened so that other programs may read, write and delete them meanwhile.
// Nothing here locks: the data files are guarded by FileLock in core/data_files.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Writes `octets` after the file's end, creating the file when it is missing (also when `octets` is empty).
// False: nothing was written, as when the file could not be opened or the disk is full. A disk that fills up
// in the middle leaves what fitted, and the result is true.
bool AppendOctets(const std::wstring& path, std::string_view octets);

// Creates the file or empties it, hidden or not, then writes `octets`. False: it could not be opened or
// emptied, and is unchanged.
// Intentional: true also when the write falls short, since the old content is lost already.
bool ReplaceOctets(const std::wstring& path, std::string_view octets);

// Replaces `octets` by what the file has from `offset` to its end, but by at most `most` octets; an offset
// beyond the end reads from the start. Returns the file's size when it was opened. Nothing, `octets` emptied:
// the file could not be opened or read. May throw std::bad_alloc.
std::optional<uint64_t> ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets,
                                       uint64_t most = UINT64_MAX);

// The size in octets that the folder lists, without opening the file; nothing when there is no such file.
std::optional<uint64_t> QueryFileSize(const std::wstring& path);

// Copies a file over `target`, whether that exists or not. Hidden, system and read-only files are copied and
// replaced like any other, and the copy is none of the three, since Windows would let it be neither replaced
// nor removed. False: the source or the target cannot be opened, and the target is unchanged; or the disk is
// full, and the target is gone or cut.
bool CopyFileOver(const std::wstring& source, const std::wstring& target);

// Removes a file, read-only or not. True: there is no such file any more, whoever removed it. False: it
// cannot be removed and is unchanged.
bool RemoveFile(const std::wstring& path);
