// Promises about a config.xml: whatever it holds, the port stays in its range; a file that reads as
// empty changes nothing; the same file gives the same settings; and what was loaded is saved so that it
// loads again.
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

struct Settings {
    bool enabled = false;
    ForwardingTarget target;

    bool operator==(const Settings& other) const {
        return enabled == other.enabled && target.ip == other.target.ip && target.port == other.target.port;
    }
};

const Settings kDefaults = {false, {L"127.0.0.1", 162}};
const Settings kBefore = {true, {L"before", 7}};

void Apply(const Settings& settings) {
    ForwardingSettings.forwardingEnabled = settings.enabled;
    ReplaceForwardingTarget(settings.target.ip, settings.target.port);
}

// What a load makes of the file that is there, over settings that tell whether it changed any.
Settings Load() {
    Apply(kBefore);
    LoadConfig();
    return {ForwardingSettings.forwardingEnabled, CopyForwardingTarget()};
}

// The file is on disk for every input; the log is nowhere, since an open that fails costs next to nothing.
void UseScratchFolder() {
    static const ScratchFolder folder;
    AppPaths.configPath = folder.Join(L"config.xml");
    AppPaths.logFilePath = folder.Join(L"no folder\\log.txt");
}

// An address that holds a marker of its own is saved as it is and then found instead of the program's
// own markers.
void CheckSavingAndLoading(const Settings& loaded) {
    Apply(loaded);
    SaveConfig();
    if (loaded.target.ip.find(L'<') == std::wstring::npos) {
        Promise(Load() == loaded, "what was loaded is saved so that it loads again");
    }
}

void CheckSettings(const Settings& loaded, const std::wstring& document) {
    Promise(loaded.target.port >= 1 && loaded.target.port <= 65535, "the port stays in its range");
    const bool hasMarkers = document.find(L"</") != std::wstring::npos;
    Promise(hasMarkers || loaded == (document.empty() ? kBefore : kDefaults),
            "an empty file changes nothing, one without markers gives the defaults");
    Promise(
        loaded.target.ip == kBefore.target.ip || loaded.target.ip == kDefaults.target.ip ||
            document.find(L"<forwardingIp>" + loaded.target.ip + L"</forwardingIp>") != std::wstring::npos,
        "the address is what stands between its markers");
}

}  // namespace

void CheckConfigFile(const uint8_t* octets, size_t size) {
    UseScratchFolder();
    const std::string_view view(reinterpret_cast<const char*>(octets), size);
    Promise(ReplaceOctets(AppPaths.configPath, view), "the scratch file can be written");
    const Settings loaded = Load();
    Promise(Load() == loaded, "the same file gives the same settings");
    std::wstring document;
    DecodeFileText(view, document);
    CheckSettings(loaded, document);
    CheckSavingAndLoading(loaded);
    Apply(kDefaults);
}
