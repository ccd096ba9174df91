// platform/files.h in memory, for programs that link this instead of the real one and watch or change what
// happens to a file. Nothing here locks: the data files are used under FileLock, as on a disk.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

struct WatchedFiles {
    // Called before each append, on the caller's thread and under its locks.
    std::function<void(const std::wstring& path, std::string_view octets)> onAppend;

    // True: this append is refused, as when another program has the file open without sharing it.
    std::function<bool(const std::wstring& path)> refusesAppend;

    // Called before each append, replacement and read.
    std::function<void(const std::wstring& path)> onOpen;

    // The folder lists the file with that size; its octets are unchanged.
    void ClaimSize(const std::wstring& path, uint64_t size);

    // The open file has that size, whatever the folder lists.
    void ClaimOpenSize(const std::wstring& path, uint64_t size);

    void Reset();                                              // no files, no callbacks
    std::string ReadOctetsOf(const std::wstring& path) const;  // empty when there is no such file
    bool Has(const std::wstring& path) const;
};
extern WatchedFiles Files;
