#include "bench/scratch_data.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "core/app_paths.h"

ScratchData::ScratchData()
    : folder_((std::filesystem::temp_directory_path() / "quillmont-bench-XXXXXX").string()) {
    if (mkdtemp(folder_.data()) == nullptr || setenv("QUILLMONT_DATA_HOME", folder_.c_str(), 1) != 0) {
        throw std::runtime_error("cannot create a temporary folder");
    }
    InitAppPaths();
}

ScratchData::~ScratchData() {
    std::filesystem::remove_all(folder_);
}
