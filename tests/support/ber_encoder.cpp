#include "tests/support/ber_encoder.h"

#include <algorithm>

namespace {

void Append(Octets& to, const Octets& part) {
    to.insert(to.end(), part.begin(), part.end());
}

// Big-endian, without leading zero octets; empty for 0.
Octets EncodeMagnitude(size_t value) {
    Octets octets;
    for (; value > 0; value >>= 8) {
        octets.insert(octets.begin(), static_cast<uint8_t>(value & 0xFF));
    }
    return octets;
}

// 64-bit two's complement without redundant leading octets.
Octets EncodeShortestInteger(uint64_t bits, uint8_t filler) {
    Octets octets = {filler};
    for (int shift = 56; shift >= 0; shift -= 8) {
        octets.push_back(static_cast<uint8_t>((bits >> shift) & 0xFF));
    }
    while (octets.size() > 1 && octets[0] == filler && ((octets[1] ^ filler) & 0x80) == 0) {
        octets.erase(octets.begin());
    }
    return octets;
}

// Base 128, with the top bit set in all octets except the last.
void AppendArc(Octets& content, uint64_t arc) {
    Octets octets = {static_cast<uint8_t>(arc & 0x7F)};
    for (arc >>= 7; arc > 0; arc >>= 7) {
        octets.insert(octets.begin(), static_cast<uint8_t>(0x80 | (arc & 0x7F)));
    }
    Append(content, octets);
}

std::vector<uint64_t> SplitArcs(std::string_view dotted) {
    std::vector<uint64_t> arcs = {0};
    for (const char character : dotted) {
        if (character == '.') {
            arcs.push_back(0);
        } else {
            arcs.back() = arcs.back() * 10 + static_cast<uint64_t>(character - '0');
        }
    }
    return arcs;
}

}  // namespace

Octets Concatenate(std::initializer_list<Octets> parts) {
    Octets all;
    for (const Octets& part : parts) {
        Append(all, part);
    }
    return all;
}

Octets EncodeHeader(uint8_t tag, size_t length) {
    if (length < 0x80) {
        return {tag, static_cast<uint8_t>(length)};
    }
    const Octets magnitude = EncodeMagnitude(length);
    return Concatenate({{tag, static_cast<uint8_t>(0x80 | magnitude.size())}, magnitude});
}

Octets EncodeElement(uint8_t tag, const Octets& content) {
    return Concatenate({EncodeHeader(tag, content.size()), content});
}

Octets EncodeLongFormElement(uint8_t tag, const Octets& content, unsigned lengthOctets) {
    Octets length = EncodeMagnitude(content.size());
    length.insert(length.begin(), lengthOctets - std::min<size_t>(lengthOctets, length.size()), 0);
    return Concatenate({{tag, static_cast<uint8_t>(0x80 | lengthOctets)}, length, content});
}

Octets EncodeSequence(std::initializer_list<Octets> elements) {
    return EncodeElement(ber::kSequence, Concatenate(elements));
}

Octets EncodeInteger(int64_t value) {
    const uint8_t filler = value < 0 ? 0xFF : 0x00;
    return EncodeElement(ber::kInteger, EncodeShortestInteger(static_cast<uint64_t>(value), filler));
}

Octets EncodeUnsigned(uint8_t tag, uint64_t value) {
    return EncodeElement(tag, EncodeShortestInteger(value, 0));
}

Octets EncodeOctetString(std::string_view octets) {
    return EncodeElement(ber::kOctetString, Octets(octets.begin(), octets.end()));
}

Octets EncodeNull() {
    return {ber::kNull, 0};
}

Octets EncodeOid(std::string_view dotted) {
    Octets content;
    if (!dotted.empty()) {
        const std::vector<uint64_t> arcs = SplitArcs(dotted);
        AppendArc(content, arcs[0] * 40 + arcs[1]);
        std::for_each(arcs.begin() + 2, arcs.end(), [&](uint64_t arc) { AppendArc(content, arc); });
    }
    return EncodeElement(ber::kOid, content);
}

Octets EncodeIpAddress(uint8_t first, uint8_t second, uint8_t third, uint8_t fourth) {
    return EncodeElement(ber::kIpAddress, {first, second, third, fourth});
}

Octets EncodeBinding(const Binding& binding) {
    return EncodeSequence({EncodeOid(binding.oid), binding.value});
}

Octets EncodeBindingList(const std::vector<Binding>& bindings) {
    Octets content;
    for (const Binding& binding : bindings) {
        Append(content, EncodeBinding(binding));
    }
    return EncodeElement(ber::kSequence, content);
}

Octets EncodeMessage(int version, const Octets& pdu) {
    return EncodeSequence({EncodeInteger(version), EncodeOctetString("public"), pdu});
}

Octets EncodeV2Pdu(uint8_t tag, const Octets& list) {
    return EncodeElement(tag,
                         Concatenate({EncodeInteger(0x51A2C3), EncodeInteger(0), EncodeInteger(0), list}));
}

Octets EncodeV1Pdu(const Octets& list) {
    return EncodeElement(
        ber::kV1TrapPdu,
        Concatenate({EncodeOid("1.3.6.1.4.1.8072.3.2.10"), EncodeIpAddress(10, 1, 2, 3), EncodeInteger(2),
                     EncodeInteger(0), EncodeUnsigned(ber::kTimeTicks, 123456), list}));
}

Octets EncodeV1Trap(const std::vector<Binding>& bindings) {
    return EncodeMessage(0, EncodeV1Pdu(EncodeBindingList(bindings)));
}

Octets EncodeV2Trap(const std::vector<Binding>& bindings) {
    return EncodeMessage(1, EncodeV2Pdu(ber::kV2TrapPdu, EncodeBindingList(bindings)));
}

Octets EncodeInform(const std::vector<Binding>& bindings) {
    return EncodeMessage(1, EncodeV2Pdu(ber::kInformPdu, EncodeBindingList(bindings)));
}

Octets EncodeV2TrapWithListContent(const Octets& listContent) {
    return EncodeMessage(1, EncodeV2Pdu(ber::kV2TrapPdu, EncodeElement(ber::kSequence, listContent)));
}
