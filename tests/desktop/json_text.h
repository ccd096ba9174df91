// The JSON of the driver's replies. ASCII only: every other UTF-16 unit is escaped, so that a lone surrogate
// reaches the reader unchanged.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

std::string JsonText(std::wstring_view text);
std::string JsonNumber(int64_t number);
std::string JsonBool(bool value);
// `values` are JSON.
std::string JsonList(const std::vector<std::string>& values);

// Collects "key": value pairs in the order of the calls; `value` is JSON.
class JsonObject {
  public:
    JsonObject& Add(std::string_view key, std::string_view value);
    std::string Text() const { return "{" + pairs_ + "}"; }

  private:
    std::string pairs_;
};
