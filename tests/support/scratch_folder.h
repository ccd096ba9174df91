// A separate folder for each test, removed afterwards.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "core/app_paths.h"

class ScratchFolder {
  public:
    ScratchFolder();   // creates an empty folder in the system's temporary folder
    ~ScratchFolder();  // removes it with everything in it
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // The path of `name` in the folder, as the program writes paths: wide, joined by backslashes.
    std::wstring Join(std::wstring_view name) const;

  private:
    std::filesystem::path path_;
};

// Points AppPaths into the folder and creates the mibs folder there. Restores the old paths at the end.
class AppPathsGuard {
  public:
    explicit AppPathsGuard(const ScratchFolder& folder);
    ~AppPathsGuard();
    AppPathsGuard(const AppPathsGuard&) = delete;
    AppPathsGuard& operator=(const AppPathsGuard&) = delete;

  private:
    AppPathTexts old_;
};

// Converts a path of the program, joined by backslashes, for the standard library.
std::filesystem::path StandardPath(std::wstring path);

// Whole files, octet for octet. A failed write fails the test; a failed read returns no octets.
void WriteOctets(const std::wstring& path, std::string_view octets);
std::string ReadOctets(const std::wstring& path);
