#include "ui/status_text.h"

#include "core/decimal_text.h"

std::wstring BuildServerText(bool running) {
    return running ? L"Server:                  RUNNING" : L"Server:                  STOPPED";
}

std::wstring BuildListenText(bool running, bool listenerOpen) {
    std::wstring text = L"Listening:              UDP 162 (traps)";
    if (running || listenerOpen) {
        text += L"  |  UDP 161 (snmp)";
    }
    return text;
}

std::wstring BuildForwardText(bool enabled, std::wstring_view ip, int32_t port) {
    std::wstring text = L"Forwarding:          ";
    text += enabled ? L"ON" : L"OFF";
    text += L"  ->  ";
    text += ip;
    text += L':';
    AppendSignedDecimal(text, port);
    return text;
}

std::wstring BuildPathsText(std::wstring_view dataDir, std::wstring_view mibsDir) {
    std::wstring text = L"Data dir:              ";
    text += dataDir;
    text += L"\r\nMIB dir:               ";
    text += mibsDir;
    return text;
}

std::wstring BuildCountsText(int32_t fileCount, int32_t mappingCount) {
    std::wstring text = L"Loaded MIB files: ";
    AppendSignedDecimal(text, fileCount);
    text += L"  |  OID mappings: ";
    AppendSignedDecimal(text, mappingCount);
    return text;
}

std::wstring BuildLastTrapText(uint64_t lastTrapTick, std::wstring_view sender, uint64_t now) {
    std::wstring text = L"Last trap:             ";
    if (lastTrapTick == 0) {
        return text + L"(none)";
    }
    text += sender;
    text += L"  (";
    AppendDecimal(text, (now - lastTrapTick) / 1000);
    text += L"s ago)";
    return text;
}
