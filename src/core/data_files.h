// The data files as the whole program shares them: each operation opens, works and closes its file under the
// one FileLock, so that a viewer never sees half a record and the operator can copy, clear or delete the
// files at any time. Failures are silent by design: there is no other log to report to.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

// Serializes every open, read and write of SNMP.txt, log.txt and config.xml, on any thread. Held for one
// open-use-close and nothing is called under it but the file operations of platform/files.h.
// Lock order: MibStoreLock (mib/name_store.h) before FileLock, never the other way.
extern std::mutex FileLock;

// Appends `text` in the format of core/file_text.h and ends the line when the text does not. Empty text only
// creates a missing file.
void AppendToFile(const std::wstring& path, std::wstring_view text);

// Appends several texts with one open, one write and one close: `octets` is what AppendFileLines made of
// them, one after the other, so that the file holds what as many calls of AppendToFile would have left.
void AppendLinesToFile(const std::wstring& path, std::string_view octets);

// Replaces the file's content by `text`, without adding a line end. False: the file could not be opened.
bool ReplaceFileText(const std::wstring& path, std::wstring_view text);

// Makes the file empty, creating it when it is missing. A file that cannot be opened is passed over.
void ClearFile(const std::wstring& path);

// The whole file as text, one character an octet, line ends as core/file_text.h reads them; empty when the
// file is missing or empty.
std::wstring ReadWholeFile(const std::wstring& path);

// What stands in the file from octet `offset` to its end, decoded as UTF-8 or else the ANSI code page, line
// ends as they are. An offset beyond the end reads the whole file: it was cleared or replaced since the
// last look.
std::wstring ReadFileFrom(const std::wstring& path, uint64_t offset);
