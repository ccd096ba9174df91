// config.xml: a fixed template, read by substring search instead of an XML parser. A file edited by hand
// loads with any line ends.
#pragma once

#include <string>
#include <string_view>

// Returns the text between the first "<tag>" and the first "</tag>" of the document, not trimmed. Returns
// `fallback` if one is missing or "</tag>" comes first.
std::wstring ExtractTagValue(std::wstring_view document, std::wstring_view tag, std::wstring_view fallback);

// Returns the five lines of config.xml, each with CR LF. Nothing is escaped.
std::wstring BuildConfigText(bool enabled, std::wstring_view ip, int port);

// Reads ForwardingSettings from config.xml and logs whether it was found. A missing or empty file leaves them
// unchanged. May throw std::bad_alloc. GUI thread, before any worker exists.
void LoadConfig();

// Writes the current settings to config.xml and logs "Config saved."; does neither if the file cannot be
// opened. May throw std::bad_alloc. GUI thread only.
void SaveConfig();
