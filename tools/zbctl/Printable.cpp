#include "Printable.h"

#include <cstdint>
#include <cstdio>

namespace TesselFX {
namespace zbctl {

namespace {

// The length of the UTF-8 sequence of a printable character at bytes[0..left), or 0 when the
// bytes there are not one (a stray or overlong byte, a surrogate, a C1 control character).
size_t PrintableSequence(const unsigned char* bytes, size_t left) {
    const unsigned char lead = bytes[0];
    size_t length = 0;
    uint32_t code = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0Fu;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07u;
    } else {
        return 0;
    }
    if (left < length) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return 0;
        code = (code << 6) | (bytes[i] & 0x3Fu);
    }
    static const uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool valid = code >= kSmallest[length] && code <= 0x10FFFF &&
                       !(code >= 0xD800 && code <= 0xDFFF) && code >= 0xA0;
    return valid ? length : 0;
}

}  // namespace

std::string Printable(const char* data, size_t size) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    std::string text;
    text.reserve(size);
    for (size_t i = 0; i < size;) {
        if (bytes[i] >= 0x20 && bytes[i] < 0x7F) {
            text += static_cast<char>(bytes[i++]);
            continue;
        }
        const size_t length = PrintableSequence(bytes + i, size - i);
        if (length != 0) {
            text.append(data + i, length);
            i += length;
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof(escaped), "\\x%02x", bytes[i++]);
        text += escaped;
    }
    return text;
}

std::string Printable(const std::string& text) { return Printable(text.data(), text.size()); }

}  // namespace zbctl
}  // namespace TesselFX
