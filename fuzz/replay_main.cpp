// Runs the checks on the committed corpora in builds without a fuzzer.
// Usage: quillmont_corpus_replay CORPUS_FOLDER [TARGET...]; a target's corpus is the subfolder of its name.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/fuzz_targets.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/text_decoding.h"
#include "tests/support/fenced_octets.h"

namespace {

struct FuzzTarget {
    const char* name;
    void (*check)(const uint8_t* octets, size_t size);
};

constexpr FuzzTarget kTargets[] = {{"config_file", CheckConfigFile},
                                   {"file_text", CheckFileText},
                                   {"mib_text", CheckMibText},
                                   {"snmp_message", CheckSnmpMessage}};

std::wstring Widen(const char* text) {
    std::wstring wide;
    DecodeUtf8OrAnsi(text, wide);
    return wide;
}

void CheckCopy(const FuzzTarget& target, const std::string& octets, size_t size) {
    const FencedOctets fenced(reinterpret_cast<const uint8_t*>(octets.data()), size);
    target.check(fenced.data(), fenced.size());
}

// Checks the whole file and its first half, which usually ends inside an element.
bool ReplayFile(const FuzzTarget& target, const std::wstring& path) {
    std::string octets;
    if (!ReadOctetsFrom(path, 0, octets)) {
        return false;
    }
    CheckCopy(target, octets, octets.size());
    CheckCopy(target, octets, octets.size() / 2);
    return true;
}

// False: nothing was checked, since the folder has no readable file.
bool ReplayFolder(const FuzzTarget& target, const std::wstring& folder) {
    size_t count = 0;
    EnumerateFolder(folder, [&](const FolderEntry& entry) {
        if (entry.isRegularFile) {
            std::printf("%s: %ls\n", target.name, entry.name.c_str());
            std::fflush(stdout);
            count += ReplayFile(target, folder + L"\\" + entry.name);
        }
    });
    std::printf("%s: %zu files\n", target.name, count);
    return count > 0;
}

bool IsSelected(const FuzzTarget& target, int argumentCount, char** arguments) {
    for (int index = 2; index < argumentCount; ++index) {
        if (std::strcmp(arguments[index], target.name) == 0) {
            return true;
        }
    }
    return argumentCount <= 2;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) {
        std::fprintf(stderr, "Usage: quillmont_corpus_replay CORPUS_FOLDER [TARGET...]\n");
        return 2;
    }
    bool allChecked = true;
    for (const FuzzTarget& target : kTargets) {
        if (IsSelected(target, argumentCount, arguments)) {
            allChecked = ReplayFolder(target, Widen(arguments[1]) + L"\\" + Widen(target.name)) && allChecked;
        }
    }
    return allChecked ? 0 : 1;
}
