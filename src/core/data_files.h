// The data files as the whole program shares them: each operation opens, works and closes its file under the
// one FileLock, so that a viewer never sees half a record and the operator can copy, clear or delete the
// files at any time. Failures are silent by design: there is no other log to report to.
#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

// Serializes every open, read and write of SNMP.txt, log.txt and config.xml, on any thread. Locked for one
// open, use and close; nothing is called under it but the file operations of platform/files.h.
// Lock order: MibStoreLock (mib/name_store.h) before FileLock, never the other way.
extern std::mutex FileLock;

// Appends `text` in the format of core/file_text.h and ends the line when the text does not. Empty text only
// creates a missing file.
void AppendToFile(const std::wstring& path, std::wstring_view text);

// Appends each text as AppendToFile would, but all of them with one open and one write. When that fails with
// nothing written, each text makes its own attempt, in order. Does nothing without texts. Throws nothing: a
// text for which memory runs out is lost.
void AppendAllToFile(const std::wstring& path, std::span<const std::wstring> texts) noexcept;

// Replaces the file's content by `text`, without adding a line end. False: the file could not be opened.
bool ReplaceFileText(const std::wstring& path, std::wstring_view text);

// Makes the file empty, creating it when it is missing. A file that cannot be opened is passed over.
void ClearFile(const std::wstring& path);

// Both readers read up to the end that the file has when they open it first. A large file is read in pieces,
// each with an open and a close of its own, and FileLock is free between them, so that appends do not wait
// for the whole. If the file is cleared, removed or replaced by a shorter one between two pieces, the result
// ends with the last piece that was read; if it is replaced by a longer one, the rest comes from that one.
// A file that is missing, empty or cannot be opened reads as empty. Both throw std::bad_alloc when the file
// does not fit into memory.

// The whole file as text, one character for each octet, line ends as DecodeFileText reads them.
std::wstring ReadWholeFile(const std::wstring& path);

// The text from octet `offset` to the end, decoded as UTF-8 or else with the ANSI code page, line ends as
// they are in the file. An offset beyond the end reads the whole file: it was cleared or replaced since the
// caller last read it.
std::wstring ReadFileFrom(const std::wstring& path, uint64_t offset);
