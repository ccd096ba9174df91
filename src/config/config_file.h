// config.xml: a fixed template that is read back by substring search, not by an XML parser, so a file edited
// by hand with any line ends still loads.
#pragma once

#include <string>
#include <string_view>

// The text between the first "<tag>" and the first "</tag>", both searched from the start of the document;
// nothing is trimmed. `fallback` when either is missing or the closing marker does not begin after the
// opening one's beginning.
std::wstring ExtractTagValue(std::wstring_view document, std::wstring_view tag, std::wstring_view fallback);

// The five lines of config.xml, each ended by CR LF. Nothing is escaped.
std::wstring BuildConfigText(bool enabled, std::wstring_view ip, int port);

// Fills ForwardingSettings from config.xml and logs what was found; a missing or empty file leaves them as
// they are. GUI thread, before any worker exists.
void LoadConfig();

// Replaces config.xml by the current settings and logs "Config saved."; when the file cannot be opened,
// nothing is changed and nothing logged. GUI thread.
void SaveConfig();
