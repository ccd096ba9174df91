#include "trap/trap_record.h"

#include "core/activity_log.h"
#include "core/decimal_text.h"

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
