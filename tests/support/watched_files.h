// An in-memory platform/files.h, linked instead of the real one, so that tests can watch file operations or
// make them fail. Nothing here locks: callers hold FileLock, as for real files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

struct WatchedFiles {
    // Called before each append, on the caller's thread and under its locks.
    std::function<void(const std::wstring& path, std::string_view octets)> onAppend;

    // True: this append fails, as when another program has the file open without sharing it.
    std::function<bool(const std::wstring& path)> refusesAppend;

    // Called before each append, replacement and read.
    std::function<void(const std::wstring& path)> onOpen;

    // Makes QueryFileSize return `size`. The contents are unchanged.
    void ClaimSize(const std::wstring& path, uint64_t size);

    // Makes ReadOctetsFrom return `size`. The contents are unchanged.
    void ClaimOpenSize(const std::wstring& path, uint64_t size);

    void Reset();                                              // no files, no callbacks
    std::string ReadOctetsOf(const std::wstring& path) const;  // empty when there is no such file
    bool Has(const std::wstring& path) const;
};
extern WatchedFiles Files;
