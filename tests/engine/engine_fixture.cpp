#include "tests/engine/engine_fixture.h"

#include <algorithm>
#include <mutex>

#include "config/forwarding_settings.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/file_text.h"
#include "mib/mib_folder.h"
#include "platform/files.h"
#include "tests/support/sample_messages.h"
#include "tests/support/stamps.h"
#include "trap/server_control.h"
#include "trap/server_state.h"

namespace {

constexpr std::string_view kLineEnd = "\r\r\n";

std::string ReadDataFile(const std::wstring& path) {
    const std::lock_guard lock(FileLock);
    std::string octets;
    ReadOctetsFrom(path, 0, octets);
    return octets;
}

std::vector<std::string> Split(const std::string& text, std::string_view separator) {
    std::vector<std::string> pieces;
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find(separator, start);
        EXPECT_NE(end, std::string::npos) << "unfinished: " << text.substr(start);
        if (end == std::string::npos) {
            break;
        }
        pieces.push_back(text.substr(start, end - start));
        start = end + separator.size();
    }
    return pieces;
}

// Returns `line` without the stamp at its start.
std::string StripStamp(const std::string& line) {
    EXPECT_TRUE(IsStamp(line.substr(0, kStampLength))) << line;
    return line.substr(std::min(kStampLength, line.size()));
}

}  // namespace

const Octets& Sample(std::string_view name) {
    return FindSample(name).octets;
}

std::string ExpectedLines(std::string_view name) {
    std::string octets;
    EncodeFileText(BuildExpectedBody(FindSample(name)), octets);
    return octets.substr(0, octets.size() - 2 * kLineEnd.size());
}

Octets LargestMessage() {
    constexpr size_t kLargest = 65507;
    const auto build = [](size_t padding) {
        return EncodeV2Trap({{"1.3.6.1.4.1.8072.1", EncodeOctetString(std::string(padding, 'x'))},
                             {"1.3.6.1.4.1.8072.2", EncodeInteger(4711)}});
    };
    constexpr size_t kFirstGuess = 65000;
    return build(kFirstGuess + kLargest - build(kFirstGuess).size());
}

EngineTest::EngineTest() {
    EXPECT_TRUE(StartSocketLibrary());
}

EngineTest::~EngineTest() {
    StopSocketLibrary();
}

void EngineTest::SetUp() {
    ServerEvents = {};
    ReplaceForwarding(false, L"127.0.0.1", 162);
    LoadMibFolder();
    ClearFile(AppPaths.logFilePath);
    ServerState.lastTrapTick = 0;
    const std::lock_guard lock(LastTrapSenderLock);
    ServerState.lastTrapSender.clear();
}

void EngineTest::TearDown() {
    StopServer();
}

std::vector<std::string> EngineTest::LogLines() {
    std::vector<std::string> lines = Split(ReadDataFile(AppPaths.logFilePath), kLineEnd);
    for (std::string& line : lines) {
        line = StripStamp(line);
        EXPECT_EQ(line.substr(0, 2), "  ") << line;
        line.erase(0, 2);
    }
    return lines;
}

size_t EngineTest::CountLogLines(std::string_view message) {
    const std::vector<std::string> lines = LogLines();
    return static_cast<size_t>(std::count(lines.begin(), lines.end(), message));
}

bool EngineTest::WaitForLogLines(std::string_view message, size_t count) {
    return WaitUntil([&] { return CountLogLines(message) >= count; });
}

std::string EngineTest::TrapFile() {
    return ReadDataFile(AppPaths.trapFilePath);
}

std::vector<std::string> EngineTest::TrapRecords() {
    std::vector<std::string> records = Split(TrapFile(), "\r\r\n\r\r\n");
    for (std::string& record : records) {
        record = StripStamp(record);
    }
    return records;
}

bool EngineTest::WaitForTraps(size_t count) {
    // The log line follows the record, so the record exists too.
    return WaitForLogLines("Trap received (127.0.0.1).", count);
}
