#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/posix_paths.h"
#include "platform/posix/scoped_descriptor.h"

namespace {

constexpr mode_t kNewFileMode = 0644;

ScopedDescriptor OpenFile(const std::wstring& path, int flags) {
    return ScopedDescriptor(open(PosixPath(path).c_str(), flags | O_CLOEXEC, kNewFileMode));
}

bool WriteAll(int descriptor, std::string_view octets) {
    while (!octets.empty()) {
        const ssize_t written = write(descriptor, octets.data(), octets.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        octets.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

// The end as found at the opening decides how much is read, so a file that grows meanwhile cannot hold us up.
bool ReadRange(int descriptor, uint64_t offset, uint64_t end, std::string& octets) {
    octets.resize(static_cast<size_t>(end - offset));
    size_t filled = 0;
    while (filled < octets.size()) {
        const ssize_t got = pread(descriptor, octets.data() + filled, octets.size() - filled,
                                  static_cast<off_t>(offset + filled));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            break;
        }
        filled += static_cast<size_t>(got);
    }
    octets.resize(filled);
    return true;
}

}  // namespace

bool AppendOctets(const std::wstring& path, std::string_view octets) {
    const ScopedDescriptor file = OpenFile(path, O_WRONLY | O_APPEND | O_CREAT);
    return file && WriteAll(file.get(), octets);
}

bool ReplaceOctets(const std::wstring& path, std::string_view octets) {
    const ScopedDescriptor file = OpenFile(path, O_WRONLY | O_TRUNC | O_CREAT);
    if (!file) {
        return false;
    }
    WriteAll(file.get(), octets);
    return true;
}

bool ReadOctetsFrom(const std::wstring& path, uint64_t offset, std::string& octets, uint64_t largestFile) {
    octets.clear();
    const ScopedDescriptor file = OpenFile(path, O_RDONLY);
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size > largestFile || !ReadRange(file.get(), offset > size ? 0 : offset, size, octets)) {
        octets.clear();
        return false;
    }
    return true;
}

std::optional<uint64_t> QueryFileSize(const std::wstring& path) {
    struct stat status {};
    if (stat(PosixPath(path).c_str(), &status) != 0) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(status.st_size);
}

bool CopyFileOver(const std::wstring& source, const std::wstring& target) {
    std::string octets;
    if (!ReadOctetsFrom(source, 0, octets)) {
        return false;
    }
    const ScopedDescriptor file = OpenFile(target, O_WRONLY | O_TRUNC | O_CREAT);
    return file && WriteAll(file.get(), octets);
}

bool RemoveFile(const std::wstring& path) {
    return unlink(PosixPath(path).c_str()) == 0 || errno == ENOENT;
}
