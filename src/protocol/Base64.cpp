#include "protocol/Base64.h"

#include <cstdint>

namespace TesselFX {
namespace Base64 {

const char* const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

namespace {

/// The value of an alphabet character, or -1 for any other character.
int ValueOf(char c) {
    if (c >= 'A' && c <= 'Z') {
        return c - 'A';
    }
    if (c >= 'a' && c <= 'z') {
        return c - 'a' + 26;
    }
    if (c >= '0' && c <= '9') {
        return c - '0' + 52;
    }
    if (c == '+') {
        return 62;
    }
    if (c == '/') {
        return 63;
    }
    return -1;
}

}  // namespace

std::string Encode(const char* data, size_t size) {
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (size_t i = 0; i < size; i += 3) {
        const size_t count = size - i < 3 ? size - i : 3;
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k) {
            group <<= 8;
            if (k < count) {
                group |= static_cast<unsigned char>(data[i + k]);
            }
        }
        for (size_t k = 0; k < 4; ++k) {
            text.push_back(k <= count ? kAlphabet[(group >> (18 - 6 * k)) & 0x3F] : '=');
        }
    }
    return text;
}

std::string Encode(const std::vector<char>& data) { return Encode(data.data(), data.size()); }

std::vector<char> Decode(const char* text, size_t size) {
    std::vector<char> bytes;
    bytes.reserve(size / 4 * 3 + 2);
    uint32_t group = 0;
    size_t pending = 0;
    for (size_t i = 0; i < size; ++i) {
        const int value = ValueOf(text[i]);
        if (value < 0) {
            break;
        }
        group = (group << 6) | static_cast<uint32_t>(value);
        if (++pending == 4) {
            bytes.push_back(static_cast<char>(group >> 16));
            bytes.push_back(static_cast<char>(group >> 8));
            bytes.push_back(static_cast<char>(group));
            group = 0;
            pending = 0;
        }
    }
    // 2 characters carry 12 bits (one byte), 3 carry 18 bits (two bytes).
    if (pending == 2) {
        bytes.push_back(static_cast<char>(group >> 4));
    } else if (pending == 3) {
        bytes.push_back(static_cast<char>(group >> 10));
        bytes.push_back(static_cast<char>(group >> 2));
    }
    return bytes;
}

std::vector<char> Decode(const std::string& text) { return Decode(text.data(), text.size()); }

}  // namespace Base64
}  // namespace TesselFX
