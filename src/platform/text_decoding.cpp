#include "platform/text_decoding.h"

#include "platform/text.h"
#include "platform/utf8.h"

void DecodeUtf8OrAnsi(std::string_view octets, std::wstring& text) {
    if (!DecodeUtf8(octets, text)) {
        DecodeAnsi(octets, text);
    }
}
