// platform/files.h kept in memory, for programs that link this instead of the real one and want to see, or
// hold up, who is in a file. Nothing here locks: the data files are used under FileLock, as on a disk.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

struct WatchedFiles {
    // Called for each append, before it is done, on the thread and under the locks of whoever appends.
    std::function<void(const std::wstring& path, std::string_view octets)> onAppend;

    // True: this append is refused, as when another program has the file open and shares it with nobody.
    std::function<bool(const std::wstring& path)> refusesAppend;

    // The same for whatever opens a file: an append, a replacement, a reading.
    std::function<void(const std::wstring& path)> onOpen;

    // The folder lists the file with that size; its octets stay what they are.
    void ClaimSize(const std::wstring& path, uint64_t size);

    void Reset();                                              // no files, no callbacks
    std::string ReadOctetsOf(const std::wstring& path) const;  // empty when there is no such file
    bool Has(const std::wstring& path) const;
};
extern WatchedFiles Files;
