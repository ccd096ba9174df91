#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>

#include "platform/files.h"

namespace {

// Its name differs from those of other tests, of concurrent runs and of killed ones.
std::filesystem::path MakeUniqueFolder() {
    static std::atomic<unsigned> counter{0};
    std::random_device random;
    for (;;) {
        const std::string name =
            "quillmont-test-" + std::to_string(random()) + "-" + std::to_string(++counter);
        std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
        if (std::filesystem::create_directories(folder)) {
            return folder;
        }
    }
}

}  // namespace

ScratchFolder::ScratchFolder() : path_(MakeUniqueFolder()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::wstring ScratchFolder::Join(std::wstring_view name) const {
    return path_.wstring().append(L"\\").append(name);
}

AppPathsGuard::AppPathsGuard(const ScratchFolder& folder) : old_(AppPaths) {
    AppPaths.dataDir = folder.path().wstring();
    AppPaths.mibsDir = folder.Join(L"mibs");
    AppPaths.configPath = folder.Join(L"config.xml");
    AppPaths.trapFilePath = folder.Join(L"SNMP.txt");
    AppPaths.logFilePath = folder.Join(L"log.txt");
    std::filesystem::create_directory(folder.path() / "mibs");
}

AppPathsGuard::~AppPathsGuard() {
    AppPaths = old_;
}

std::filesystem::path StandardPath(std::wstring path) {
    std::replace(path.begin(), path.end(), L'\\', wchar_t{std::filesystem::path::preferred_separator});
    return path;
}

void WriteOctets(const std::wstring& path, std::string_view octets) {
    EXPECT_TRUE(RemoveFile(path) || !QueryFileSize(path)) << "the old file cannot be removed";
    EXPECT_TRUE(AppendOctets(path, octets));
}

std::string ReadOctets(const std::wstring& path) {
    std::string octets;
    ReadOctetsFrom(path, 0, octets);
    return octets;
}
