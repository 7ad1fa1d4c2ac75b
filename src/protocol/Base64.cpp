#include "protocol/Base64.h"

#include <cstdint>
#include <cstring>

namespace TesselFX {
namespace Base64 {

namespace {

constexpr char kCharacters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

/// The two characters of every 12-bit value: a table of 8 KB that encodes 12 bits at once.
struct PairTable {
    char pairs[4096][2];
};

constexpr PairTable MakePairTable() {
    PairTable table{};
    for (int value = 0; value < 4096; ++value) {
        table.pairs[value][0] = kCharacters[value >> 6];
        table.pairs[value][1] = kCharacters[value & 63];
    }
    return table;
}

constexpr PairTable kPairs = MakePairTable();

/// For each position of a group of four characters, what each character adds to the three
/// bytes of the group, laid out so that the word stored in the host's byte order writes them
/// in order; a character outside the alphabet sets kInvalid, in the fourth byte, which is
/// never kept. 4 KB in all.
struct DecodeTables {
    uint32_t position[4][256];
};

/// Bits of the group value (first character highest) moved to the byte of the word that the
/// host stores at offset byteIndex.
constexpr uint32_t PlaceByte(uint32_t byteValue, int byteIndex) {
    return byteValue << (kLittleEndian ? 8 * byteIndex : 24 - 8 * byteIndex);
}

constexpr uint32_t kInvalid = PlaceByte(0x80, 3);

constexpr int ValueOf(int c) {
    return c >= 'A' && c <= 'Z'   ? c - 'A'
           : c >= 'a' && c <= 'z' ? c - 'a' + 26
           : c >= '0' && c <= '9' ? c - '0' + 52
           : c == '+'             ? 62
           : c == '/'             ? 63
                                  : -1;
}

constexpr DecodeTables MakeDecodeTables() {
    DecodeTables tables{};
    for (int position = 0; position < 4; ++position) {
        for (int c = 0; c < 256; ++c) {
            const int value = ValueOf(c);
            if (value < 0) {
                tables.position[position][c] = kInvalid;
                continue;
            }
            const uint32_t group = static_cast<uint32_t>(value) << (18 - 6 * position);
            tables.position[position][c] = PlaceByte((group >> 16) & 0xFF, 0) |
                                           PlaceByte((group >> 8) & 0xFF, 1) |
                                           PlaceByte(group & 0xFF, 2);
        }
    }
    return tables;
}

constexpr DecodeTables kDecode = MakeDecodeTables();

/// The word of four characters, kInvalid set when one is outside the alphabet.
inline uint32_t DecodeGroup(const unsigned char* text) {
    return kDecode.position[0][text[0]] | kDecode.position[1][text[1]] |
           kDecode.position[2][text[2]] | kDecode.position[3][text[3]];
}

/// Eight bytes as a big-endian number.
inline uint64_t LoadBigEndian64(const char* data) {
    uint64_t value;
    std::memcpy(&value, data, sizeof(value));
    return kLittleEndian ? __builtin_bswap64(value) : value;
}

/// The eight characters of the six bytes in the high bits of bits.
inline void EncodeSix(char* out, uint64_t bits) {
    std::memcpy(out, kPairs.pairs[bits >> 52], 2);
    std::memcpy(out + 2, kPairs.pairs[(bits >> 40) & 0xFFF], 2);
    std::memcpy(out + 4, kPairs.pairs[(bits >> 28) & 0xFFF], 2);
    std::memcpy(out + 6, kPairs.pairs[(bits >> 16) & 0xFFF], 2);
}

}  // namespace

const char* const kAlphabet = kCharacters;

std::string Encode(const char* data, size_t size) {
    std::string text((size + 2) / 3 * 4, '\0');
    char* out = &text[0];
    size_t i = 0;
    // Six bytes read as eight, twice a step; the two bytes more are those of the next six.
    for (; i + 14 <= size; i += 12, out += 16) {
        EncodeSix(out, LoadBigEndian64(data + i));
        EncodeSix(out + 8, LoadBigEndian64(data + i + 6));
    }
    for (; i + 8 <= size; i += 6, out += 8) {
        EncodeSix(out, LoadBigEndian64(data + i));
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    for (; i + 3 <= size; i += 3, out += 4) {
        const uint32_t group = static_cast<uint32_t>(bytes[i]) << 16 |
                               static_cast<uint32_t>(bytes[i + 1]) << 8 | bytes[i + 2];
        std::memcpy(out, kPairs.pairs[group >> 12], 2);
        std::memcpy(out + 2, kPairs.pairs[group & 0xFFF], 2);
    }
    // A last group of 1 or 2 bytes gives 2 or 3 characters and "=" up to 4.
    if (i < size) {
        const size_t count = size - i;
        const uint32_t group = static_cast<uint32_t>(bytes[i]) << 16 |
                               (count == 2 ? static_cast<uint32_t>(bytes[i + 1]) << 8 : 0u);
        out[0] = kCharacters[group >> 18];
        out[1] = kCharacters[(group >> 12) & 0x3F];
        out[2] = count == 2 ? kCharacters[(group >> 6) & 0x3F] : '=';
        out[3] = '=';
    }
    return text;
}

std::string Encode(const std::vector<char>& data) { return Encode(data.data(), data.size()); }

std::vector<char> Decode(const char* text, size_t size) {
    // Room for the bytes of the whole groups and the two of a last partial one; a whole group
    // is stored as a word of four bytes, the last thrown away, which that room also holds.
    std::vector<char> bytes(size / 4 * 3 + 2);
    char* out = bytes.data();
    const auto* chars = reinterpret_cast<const unsigned char*>(text);
    const auto* const end = chars + size;
    // Four groups a step; a step with a character outside the alphabet is left to the loop
    // below.
    for (size_t steps = size / 16; steps != 0; --steps, chars += 16, out += 12) {
        const uint32_t group0 = DecodeGroup(chars);
        const uint32_t group1 = DecodeGroup(chars + 4);
        const uint32_t group2 = DecodeGroup(chars + 8);
        const uint32_t group3 = DecodeGroup(chars + 12);
        if (((group0 | group1 | group2 | group3) & kInvalid) != 0) break;
        std::memcpy(out, &group0, sizeof(group0));
        std::memcpy(out + 3, &group1, sizeof(group1));
        std::memcpy(out + 6, &group2, sizeof(group2));
        std::memcpy(out + 9, &group3, sizeof(group3));
    }
    size = static_cast<size_t>(end - chars);
    // The rest one character at a time, up to the first "=" or foreign character.
    uint32_t group = 0;
    size_t pending = 0;
    for (size_t i = 0; i < size; ++i) {
        const int value = ValueOf(chars[i]);
        if (value < 0) break;
        group = (group << 6) | static_cast<uint32_t>(value);
        if (++pending == 4) {
            out[0] = static_cast<char>(group >> 16);
            out[1] = static_cast<char>(group >> 8);
            out[2] = static_cast<char>(group);
            out += 3;
            group = 0;
            pending = 0;
        }
    }
    // 2 characters carry 12 bits (one byte), 3 carry 18 bits (two bytes).
    if (pending == 2) {
        *out++ = static_cast<char>(group >> 4);
    } else if (pending == 3) {
        *out++ = static_cast<char>(group >> 10);
        *out++ = static_cast<char>(group >> 2);
    }
    bytes.resize(static_cast<size_t>(out - bytes.data()));
    return bytes;
}

std::vector<char> Decode(const std::string& text) { return Decode(text.data(), text.size()); }

}  // namespace Base64
}  // namespace TesselFX
