#include "trap/trap_record.h"

#include "core/decimal_text.h"
#include "core/timestamp.h"

namespace {

void AppendBindingLine(std::wstring& record, size_t number, const VarbindRecord& binding) {
    record.append(L"---> [");
    AppendDecimal(record, number);
    record.append(L"] ").append(binding.oid);
    if (!binding.name.empty()) {
        record.append(L" (").append(binding.name).append(L")");
    }
    record.append(L"  ").append(binding.type).append(L" = ").append(binding.value).append(L"\r\n");
}

}  // namespace

std::wstring ComposeTrapRecord(const LocalTime& time, std::wstring_view sender,
                               const std::vector<VarbindRecord>& bindings) {
    std::wstring record = FormatTimestamp(time);
    record.append(L"       FROM: ").append(sender).append(L"\r\n");
    for (size_t index = 0; index < bindings.size(); ++index) {
        AppendBindingLine(record, index + 1, bindings[index]);
    }
    if (bindings.empty()) {
        record.append(L"DECODED VARBINDS: (not decoded)\r\n");
    }
    record.append(L"\r\n");
    return record;
}
