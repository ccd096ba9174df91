#include "trap/trap_record.h"

#include <algorithm>

#include "core/activity_log.h"
#include "core/decimal_text.h"

using namespace std::string_view_literals;

namespace {

// What a line holds besides its number and the four texts of its binding.
constexpr std::wstring_view kFrame = L"---> []  ()   = \r\n";

wchar_t* Write(wchar_t* out, std::wstring_view text) {
    return std::copy(text.begin(), text.end(), out);
}

// Written into room made once for the whole line: composing takes half the time that appending piece by
// piece takes.
void AppendBindingLine(std::wstring& record, size_t number, const VarbindRecord& binding) {
    const size_t start = record.size();
    record.resize(start + kFrame.size() + kMaxDecimalDigits + binding.oid.size() + binding.name.size() +
                  binding.type.size() + binding.value.size());
    wchar_t* out = Write(record.data() + start, L"---> ["sv);
    out = Write(WriteDecimal(out, number), L"] "sv);
    out = Write(out, binding.oid);
    if (!binding.name.empty()) {
        out = Write(Write(Write(out, L" ("sv), binding.name), L")"sv);
    }
    out = Write(Write(out, L"  "sv), binding.type);
    out = Write(Write(out, L" = "sv), binding.value);
    out = Write(out, L"\r\n"sv);
    record.resize(static_cast<size_t>(out - record.data()));
}

}  // namespace

void ComposeTrapRecord(const LocalTime& time, std::wstring_view sender, const VarbindList& bindings,
                       std::wstring& record) {
    record.clear();
    AppendTimestamp(record, time);
    record.append(L"       FROM: ").append(sender).append(L"\r\n");
    size_t number = 0;
    for (const VarbindRecord& binding : bindings) {
        AppendBindingLine(record, ++number, binding);
    }
    if (bindings.empty()) {
        record.append(L"DECODED VARBINDS: (not decoded)\r\n");
    }
    record.append(L"\r\n");
}
