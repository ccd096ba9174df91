#include "bench/bench_messages.h"

#include <algorithm>
#include <string>

namespace {

// Upper bound for the headers of a message and of one binding.
constexpr size_t kHeaderOctets = 64;

Octets EncodeTimeTicks(uint64_t ticks) {
    return EncodeUnsigned(ber::kTimeTicks, ticks);
}

// Binding number `index` of an interface trap.
Binding MakeInterfaceBinding(size_t index) {
    const std::string instance = std::to_string(1000 + index / 7);
    switch (index % 7) {
        case 0:
            return {"1.3.6.1.2.1.2.2.1.1." + instance, EncodeInteger(static_cast<int64_t>(1000 + index / 7))};
        case 1:
            return {"1.3.6.1.2.1.2.2.1.7." + instance, EncodeInteger(1)};
        case 2:
            return {"1.3.6.1.2.1.2.2.1.8." + instance, EncodeInteger(2)};
        case 3:
            return {"1.3.6.1.2.1.2.2.1.2." + instance, EncodeOctetString("GigabitEthernet1/0/24")};
        case 4:
            return {"1.3.6.1.2.1.2.2.1.10." + instance, EncodeUnsigned(ber::kCounter32, 3123456789U)};
        case 5:
            return {"1.3.6.1.2.1.31.1.1.1.6." + instance, EncodeUnsigned(ber::kCounter64, 1234567890123456U)};
        default:
            return {"1.3.6.1.2.1.4.20.1.1.10.20.30.40", EncodeIpAddress(10, 20, 30, 40)};
    }
}

// A trap of at most `octets` octets whose list repeats `unit`.
Octets FillTrap(const Octets& unit, size_t octets) {
    Octets content;
    while (content.size() + unit.size() + kHeaderOctets <= octets) {
        content.insert(content.end(), unit.begin(), unit.end());
    }
    return EncodeV2TrapWithListContent(content);
}

}  // namespace

Octets MakeTrap(size_t bindings) {
    std::vector<Binding> list{
        {"1.3.6.1.2.1.1.3.0", EncodeTimeTicks(kSampleTicks)},
        {"1.3.6.1.6.3.1.1.4.1.0", EncodeElement(ber::kOid, {0x2B, 6, 1, 6, 3, 1, 1, 5, 3})},
    };
    for (size_t index = 0; list.size() < bindings; ++index) {
        list.push_back(MakeInterfaceBinding(index));
    }
    return EncodeV2Trap(list);
}

Octets MakeTrapOfTinyBindings(size_t octets) {
    return FillTrap(EncodeSequence({EncodeElement(ber::kOid, {})}), octets);
}

Octets MakeTrapOfTinyElements(size_t octets) {
    return FillTrap(EncodeInteger(1), octets);
}

Octets MakeTrapOfNestedElements(size_t octets) {
    constexpr size_t kLongestHeader = 4;
    Octets headers;
    for (size_t left = octets - kHeaderOctets; left > 0;) {
        left -= std::min(left, kLongestHeader);
        const Octets header = EncodeHeader(ber::kSequence, left);
        headers.insert(headers.end(), header.begin(), header.end());
    }
    return EncodeV2TrapWithListContent(headers);
}

Octets MakeTrapWithGiantIdentifier(size_t octets) {
    return EncodeV2TrapWithListContent(
        EncodeSequence({EncodeElement(ber::kOid, Octets(octets - kHeaderOctets, 0x7F)), EncodeNull()}));
}

Octets MakeTrapWithGiantText(size_t octets) {
    return EncodeV2TrapWithListContent(EncodeSequence(
        {EncodeElement(ber::kOid, {0x2B, 6}), EncodeOctetString(std::string(octets - kHeaderOctets, 'x'))}));
}

Octets MakeTrapOfTenOctetArcs(size_t octets) {
    Octets arcs{0x2B};
    for (int arc = 0; arc < 12; ++arc) {
        arcs.insert(arcs.end(), 9, 0xFF);
        arcs.push_back(0x7F);
    }
    return FillTrap(EncodeSequence({EncodeElement(ber::kOid, arcs), EncodeElement(ber::kOid, arcs)}), octets);
}
