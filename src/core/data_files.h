// Access to the data files, which all threads share. A file is open only while FileLock is locked, so a
// viewer never sees half a record, and the operator can copy, clear or delete the files at any time. Failures
// are not logged, because the log is one of these files.
#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

// Serializes every open, read and write of SNMP.txt, log.txt and config.xml. Locked for one open, use and
// close; only the file operations of platform/files.h are called while it is held.
//
// Lock order: MibStoreLock (mib/name_store.h) before FileLock, never the other way.
extern std::mutex FileLock;

// Appends `text`, encoded by AppendFileLines of core/file_text.h, which adds a missing line end. Creates a
// missing file, even if `text` is empty. May throw std::bad_alloc; nothing is written then.
void AppendToFile(const std::wstring& path, std::wstring_view text);

// Appends all texts as AppendToFile does, but with one open and one write. If nothing could be written,
// appends each text separately, in order. Does nothing if `texts` is empty. Throws nothing: if memory runs
// out for a text, it is lost.
void AppendAllToFile(const std::wstring& path, std::span<const std::wstring> texts) noexcept;

// Replaces the file's content with `text`, without adding a line end. False: the file could not be opened and
// is unchanged.
bool ReplaceFileText(const std::wstring& path, std::wstring_view text);

// Empties the file; creates it if it is missing. Does nothing if the file cannot be opened.
void ClearFile(const std::wstring& path);

// Both readers read up to the size that the file had when they first opened it, and return empty text if it
// is missing or cannot be opened. They throw std::bad_alloc if the file does not fit into memory.
//
// A large file is read in pieces. FileLock is released between them, so that appends do not wait for the
// whole read. If the file is cleared, removed or replaced by a shorter one between two pieces, the result
// ends after the last piece; if it is replaced by a longer one, the rest is read from the new file.

// Returns the whole file, decoded by DecodeFileText of core/file_text.h.
std::wstring ReadWholeFile(const std::wstring& path);

// Returns the text from octet `offset` to the end, decoded as UTF-8 or, if it is not valid UTF-8, with the
// ANSI code page. Line ends are unchanged. If `offset` is beyond the end, the file was cleared or replaced
// since the caller last read it, and the whole file is returned.
std::wstring ReadFileFrom(const std::wstring& path, uint64_t offset);
