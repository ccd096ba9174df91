#include "config/config_file.h"

#include "config/forwarding_settings.h"
#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/decimal_text.h"

namespace {

void AppendElement(std::wstring& document, std::wstring_view tag, std::wstring_view value) {
    document.append(L"  <").append(tag).append(L">");
    document.append(value);
    document.append(L"</").append(tag).append(L">\r\n");
}

}  // namespace

std::wstring ExtractTagValue(std::wstring_view document, std::wstring_view tag, std::wstring_view fallback) {
    const std::wstring opening = L"<" + std::wstring(tag) + L">";
    const std::wstring closing = L"</" + std::wstring(tag) + L">";
    const size_t openingAt = document.find(opening);
    // Intentional: also searched from the start of the document, so an element counts as missing if a stray
    // closing marker comes before it.
    const size_t closingAt = document.find(closing);
    if (openingAt == std::wstring_view::npos || closingAt == std::wstring_view::npos ||
        closingAt <= openingAt) {
        return std::wstring(fallback);
    }
    const size_t valueAt = openingAt + opening.size();
    return std::wstring(document.substr(valueAt, closingAt - valueAt));
}

std::wstring BuildConfigText(bool enabled, std::wstring_view ip, int port) {
    std::wstring portText;
    AppendSignedDecimal(portText, port);
    std::wstring document = L"<config>\r\n";
    AppendElement(document, L"forwardingEnabled", enabled ? L"1" : L"0");
    AppendElement(document, L"forwardingIp", ip);
    AppendElement(document, L"forwardingPort", portText);
    document.append(L"</config>\r\n");
    return document;
}

void LoadConfig() {
    const std::wstring document = ReadWholeFile(AppPaths.configPath);
    if (document.empty()) {
        LogMessage(L"No config.xml found (or empty). Using defaults.");
        return;
    }
    ReplaceForwarding(ExtractTagValue(document, L"forwardingEnabled", L"0") == L"1",
                      ExtractTagValue(document, L"forwardingIp", L"127.0.0.1"),
                      ParseDecimalInt(ExtractTagValue(document, L"forwardingPort", L"162")));
    LogMessage(L"Config loaded.");
}

void SaveConfig() {
    const ForwardingValues forwarding = CopyForwarding();
    if (ReplaceFileText(AppPaths.configPath,
                        BuildConfigText(forwarding.enabled, forwarding.ip, forwarding.port))) {
        LogMessage(L"Config saved.");
    }
}
