// Promises about a config.xml: whatever it contains, the port is in its range; an empty file changes nothing;
// the same file gives the same settings; and loaded settings can be saved and loaded again.
#include "config/config_file.h"

#include <string>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/file_text.h"
#include "fuzz/fuzz_targets.h"
#include "fuzz/promise.h"
#include "platform/files.h"
#include "tests/support/scratch_folder.h"

namespace {

bool operator==(const ForwardingValues& one, const ForwardingValues& other) {
    return one.enabled == other.enabled && one.ip == other.ip && one.port == other.port;
}

const ForwardingValues kDefaults = {false, L"127.0.0.1", 162};
const ForwardingValues kBefore = {true, L"before", 7};

void Apply(const ForwardingValues& values) {
    ReplaceForwarding(values.enabled, values.ip, values.port);
}

// Loads the file over settings that no default equals, so that changes show.
ForwardingValues Load() {
    Apply(kBefore);
    LoadConfig();
    return CopyForwarding();
}

// The settings are a real file. The log cannot be opened, which is faster than writing it.
void UseScratchFolder() {
    static const ScratchFolder folder;
    AppPaths.configPath = folder.Join(L"config.xml");
    AppPaths.logFilePath = folder.Join(L"no folder\\log.txt");
}

// An address that contains a marker does not survive: it is saved unescaped, and the next load finds that
// marker first.
void CheckSavingAndLoading(const ForwardingValues& loaded) {
    Apply(loaded);
    SaveConfig();
    if (loaded.ip.find(L'<') == std::wstring::npos) {
        Promise(Load() == loaded, "loaded settings can be saved and loaded again");
    }
}

void CheckSettings(const ForwardingValues& loaded, const std::wstring& document) {
    Promise(loaded.port >= 1 && loaded.port <= 65535, "the port is in its range");
    const bool hasMarkers = document.find(L"</") != std::wstring::npos;
    Promise(hasMarkers || loaded == (document.empty() ? kBefore : kDefaults),
            "an empty file changes nothing, one without markers gives the defaults");
    Promise(loaded.ip == kBefore.ip || loaded.ip == kDefaults.ip ||
                document.find(L"<forwardingIp>" + loaded.ip + L"</forwardingIp>") != std::wstring::npos,
            "the address is the text between its markers");
}

}  // namespace

void CheckConfigFile(const uint8_t* octets, size_t size) {
    UseScratchFolder();
    const std::string_view view(reinterpret_cast<const char*>(octets), size);
    Promise(ReplaceOctets(AppPaths.configPath, view), "the scratch file can be written");
    const ForwardingValues loaded = Load();
    Promise(Load() == loaded, "the same file gives the same settings");
    std::wstring document;
    DecodeFileText(view, document);
    CheckSettings(loaded, document);
    CheckSavingAndLoading(loaded);
    Apply(kDefaults);
}
