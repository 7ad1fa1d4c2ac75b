#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "BringupFiles.h"

// The tuning tool's frames laid out by hand and their base64 text; shared by the end-to-end
// tests and the benchmarks, so it stays free of the test framework.
namespace bringup_test {

/// Base64 of the standard alphabet with "=" fill, written apart from the library's own.
inline std::string ToText(const std::string& bytes) {
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k) {
            group = (group << 8) | (i + k < bytes.size() ? static_cast<uint8_t>(bytes[i + k]) : 0);
        }
        const size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
        for (size_t k = 0; k < 4; ++k) {
            text.push_back(k <= count ? alphabet[(group >> (18 - 6 * k)) & 63] : '=');
        }
    }
    return text;
}

/// The reverse of ToText for well-formed text.
inline std::string FromText(const std::string& text) {
    static const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    uint32_t group = 0;
    int bits = 0;
    for (char c : text) {
        const size_t value = alphabet.find(c);
        if (value == std::string::npos) break;
        group = (group << 6) | static_cast<uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<char>((group >> bits) & 0xFF));
        }
    }
    return bytes;
}

/// A frame: u32 id, then the payload.
inline std::string Msg(uint32_t id, const std::string& payload = "") {
    std::string out;
    PutU32(out, id);
    return out + payload;
}
inline std::string U32(uint32_t value) {
    std::string out;
    PutU32(out, value);
    return out;
}
inline std::string F64(double value) {
    std::string out;
    PutF64(out, value);
    return out;
}
/// u32 count, then (u32 id, f64 value) pairs.
inline std::string Pairs(const std::map<unsigned, double>& pairs) {
    std::string out = U32(static_cast<uint32_t>(pairs.size()));
    for (const auto& pair : pairs) out += U32(pair.first) + F64(pair.second);
    return out;
}
/// A piece of a long transfer, id 52.
inline std::string Piece(uint32_t counter, uint32_t total, uint32_t session,
                         const std::string& data) {
    return Msg(52, U32(counter) + U32(total) + U32(session) +
                       U32(static_cast<uint32_t>(data.size())) + data);
}

}  // namespace bringup_test
