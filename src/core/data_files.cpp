#include "core/data_files.h"

#include "core/file_text.h"
#include "platform/files.h"
#include "platform/text_decoding.h"

std::mutex FileLock;

void AppendToFile(const std::wstring& path, std::wstring_view text) {
    // Encoded before the lock is taken, so that two threads wait for each other only while a file is open.
    std::string octets;
    AppendFileLines(text, octets);
    AppendLinesToFile(path, octets);
}

void AppendLinesToFile(const std::wstring& path, std::string_view octets) {
    const std::lock_guard lock(FileLock);
    AppendOctets(path, octets);
}

bool ReplaceFileText(const std::wstring& path, std::wstring_view text) {
    std::string octets;
    EncodeFileText(text, octets);
    const std::lock_guard lock(FileLock);
    return ReplaceOctets(path, octets);
}

void ClearFile(const std::wstring& path) {
    const std::lock_guard lock(FileLock);
    ReplaceOctets(path, {});
}

std::wstring ReadWholeFile(const std::wstring& path) {
    std::string octets;
    {
        const std::lock_guard lock(FileLock);
        ReadOctetsFrom(path, 0, octets);
    }
    std::wstring text;
    DecodeFileText(octets, text);
    return text;
}

std::wstring ReadFileFrom(const std::wstring& path, uint64_t offset) {
    std::string octets;
    {
        const std::lock_guard lock(FileLock);
        ReadOctetsFrom(path, offset, octets);
    }
    std::wstring text;
    DecodeUtf8OrAnsi(octets, text);
    return text;
}
