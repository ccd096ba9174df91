// Runs the checks on the committed corpora, which include former findings, in builds without a fuzzer. Usage:
// quillmont_corpus_replay CORPUS_FOLDER [TARGET...]; each target has a folder of its name in there.
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

// The whole file, and its first half, which usually ends inside an element.
bool ReplayFile(const FuzzTarget& target, const std::wstring& path) {
    std::string octets;
    if (!ReadOctetsFrom(path, 0, octets)) {
        return false;
    }
    CheckCopy(target, octets, octets.size());
    CheckCopy(target, octets, octets.size() / 2);
    return true;
}

// False: the folder has no file that can be read, so nothing was checked.
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

bool IsWanted(const FuzzTarget& target, int argumentCount, char** arguments) {
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
    bool allThere = true;
    for (const FuzzTarget& target : kTargets) {
        if (IsWanted(target, argumentCount, arguments)) {
            allThere = ReplayFolder(target, Widen(arguments[1]) + L"\\" + Widen(target.name)) && allThere;
        }
    }
    return allThere ? 0 : 1;
}
