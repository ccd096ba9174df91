#include "core/data_files.h"

#include <algorithm>
#include <optional>

#include "core/file_text.h"
#include "core/run_guarded.h"
#include "platform/files.h"
#include "platform/text_decoding.h"

std::mutex FileLock;

namespace {

// Makes one attempt to append all texts. False: nothing was written.
bool AppendTogether(const std::wstring& path, std::span<const std::wstring> texts) noexcept try {
    std::string octets;
    for (const std::wstring& text : texts) {
        AppendFileLines(text, octets);
    }
    const std::lock_guard lock(FileLock);
    return AppendOctets(path, octets);
} catch (...) {
    return false;
}

}  // namespace

void AppendToFile(const std::wstring& path, std::wstring_view text) {
    // Encode first, so that FileLock is locked only while the file is open.
    std::string octets;
    AppendFileLines(text, octets);
    const std::lock_guard lock(FileLock);
    AppendOctets(path, octets);
}

void AppendAllToFile(const std::wstring& path, std::span<const std::wstring> texts) noexcept {
    if (texts.size() > 1 && AppendTogether(path, texts)) {
        return;
    }
    for (const std::wstring& text : texts) {
        RunGuarded([&] { AppendToFile(path, text); });
    }
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

namespace {

// Octets. Small enough that an append hardly waits: reading a piece takes about as long as a few appends.
constexpr uint64_t kPieceSize = uint64_t{1} << 20;

std::optional<uint64_t> ReadPiece(const std::wstring& path, uint64_t offset, uint64_t maxCount,
                                  std::string& piece) {
    const std::lock_guard lock(FileLock);
    return ReadOctetsFrom(path, offset, piece, maxCount);
}

std::string ReadInPieces(const std::wstring& path, uint64_t offset) {
    std::string piece;
    const std::optional<uint64_t> size = ReadPiece(path, offset, kPieceSize, piece);
    if (!size) {
        return {};
    }
    const uint64_t start = offset > *size ? 0 : offset;
    std::string octets;
    octets.reserve(static_cast<size_t>(*size - start));
    octets = piece;
    while (!piece.empty() && start + octets.size() < *size) {
        const uint64_t next = start + octets.size();
        if (ReadPiece(path, next, std::min(kPieceSize, *size - next), piece) < size) {
            break;  // cleared, removed or replaced by a shorter file
        }
        octets += piece;
    }
    return octets;
}

}  // namespace

std::wstring ReadWholeFile(const std::wstring& path) {
    std::wstring text;
    DecodeFileText(ReadInPieces(path, 0), text);
    return text;
}

std::wstring ReadFileFrom(const std::wstring& path, uint64_t offset) {
    std::wstring text;
    DecodeUtf8OrAnsi(ReadInPieces(path, offset), text);
    return text;
}
