// Walking the octets of a message in the Basic Encoding Rules: headers, integers, object identifiers.
// Forgiving in some places and strict in others; both are relied on by trap/snmp_message.h. No state, single
// forward passes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// What is left to read of a message, or of the content of an element.
struct OctetRange {
    const uint8_t* position = nullptr;
    const uint8_t* end = nullptr;

    size_t size() const { return static_cast<size_t>(end - position); }
};

// One element: its tag octet, taken whole, and its content.
struct TlvHeader {
    uint8_t tag = 0;
    const uint8_t* content = nullptr;
    const uint8_t* contentEnd = nullptr;  // also where the next element begins

    size_t size() const { return static_cast<size_t>(contentEnd - content); }
    OctetRange elements() const { return {content, contentEnd}; }
};

// Takes `count` octets off the front. True: *octets is the first of them. False, nothing touched: there are
// fewer of them left.
// The one place that compares wanted with remaining, never a sum of a pointer and a length that a stranger
// chose. Inline like what follows: it takes a tenth to a quarter off the decoding of a trap.
inline bool TakeOctets(OctetRange& left, uint64_t count, const uint8_t** octets) {
    if (count > left.size()) {
        return false;
    }
    *octets = left.position;
    left.position += count;
    return true;
}

// Takes the length whose octets follow `lengthOctet`, which announces how many. False, nothing touched: none,
// more than four, or cut off.
bool TakeLongLength(OctetRange& left, uint8_t lengthOctet, uint64_t* length);

// Reads the header at `position` inside [position, end).
// True: *header is filled and its whole content lies inside the range; content that ends exactly at `end`
//   is fine.
// False, *header untouched: fewer than two octets left, an indefinite length (0x80), a long form of more than
//   four length octets, length octets cut off, or content running past `end`.
// Never looks at `end` or beyond.
// Kept: lengths longer than necessary are accepted, since agents in the field send them.
inline bool ReadTlvHeader(const uint8_t* position, const uint8_t* end, TlvHeader* header) {
    OctetRange left = {position, end};
    const uint8_t* start = nullptr;
    if (!TakeOctets(left, 2, &start)) {
        return false;
    }
    uint64_t length = start[1];
    if (length >= 0x80 && !TakeLongLength(left, start[1], &length)) {
        return false;
    }
    const uint8_t* content = nullptr;
    if (!TakeOctets(left, length, &content)) {
        return false;
    }
    *header = {start[0], content, left.position};
    return true;
}

// The same for the element at the front of `left`; what is left begins behind it. False: both are untouched.
inline bool TakeElement(OctetRange& left, TlvHeader* element) {
    if (!ReadTlvHeader(left.position, left.end, element)) {
        return false;
    }
    left.position = element->contentEnd;
    return true;
}

// The octets as a big-endian two's complement number; no octets give 0. Callers print it signed or unsigned.
// Kept: every multiple of eight octets is sign-extended by a shift of 0, so that a negative number of eight
//   octets is always -1; of more than eight octets only the last eight count; and an unsigned value that an
//   agent sent without its leading zero octet is sign-extended too and prints near 18446744073709551615.
uint64_t DecodeBerInteger(const uint8_t* octets, size_t count);

// Replaces `text` by the identifier in dotted decimal; no octets give empty text. Cannot fail.
// Kept: the first octet alone gives the first two arcs as v / 40 and v mod 40, whatever it is; arcs wrap in
//   64 bits; octets of an arc that the content ends in the middle of are dropped.
void DecodeOidText(const uint8_t* octets, size_t count, std::wstring& text);
