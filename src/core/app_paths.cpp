#include "core/app_paths.h"

#include "core/data_files.h"
#include "platform/folders.h"

AppPathTexts AppPaths;

namespace {

void CreateWhenMissing(const std::wstring& folder) {
    if (!PathExists(folder)) {
        CreateFolderWithParents(folder);
    }
}

}  // namespace

void InitAppPaths() {
    AppPaths.dataDir = QueryLocalAppDataFolder() + L"\\Quillmont";
    AppPaths.mibsDir = AppPaths.dataDir + L"\\mibs";
    CreateWhenMissing(AppPaths.dataDir);
    CreateWhenMissing(AppPaths.mibsDir);
    AppPaths.configPath = AppPaths.dataDir + L"\\config.xml";
    AppPaths.trapFilePath = AppPaths.dataDir + L"\\SNMP.txt";
    AppPaths.logFilePath = AppPaths.dataDir + L"\\log.txt";
    AppendToFile(AppPaths.trapFilePath, {});
    AppendToFile(AppPaths.logFilePath, {});
}
