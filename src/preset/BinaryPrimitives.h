#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace TesselFX {

// Little-endian, unaligned readers and writers over a cursor and the end of its buffer.
// Each one checks the bytes left before it touches the buffer, moves the cursor only on
// success and returns whether it succeeded. The fixed-width ones are inline: preset files
// of megabytes are read item by item.

/// Whether count bytes are left between cursor and end.
inline bool HasBytes(const char* cursor, const char* end, size_t count) {
    return cursor <= end && static_cast<size_t>(end - cursor) >= count;
}

template <typename T>
bool ReadLittleEndian(const char*& cursor, const char* end, T& value) {
    if (!HasBytes(cursor, end, sizeof(T))) return false;
    T result = 0;
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    std::memcpy(&result, cursor, sizeof(T));
#else
    for (size_t i = 0; i < sizeof(T); ++i) {
        result |= static_cast<T>(static_cast<T>(static_cast<unsigned char>(cursor[i])) << (8 * i));
    }
#endif
    value = result;
    cursor += sizeof(T);
    return true;
}

template <typename T>
bool WriteLittleEndian(char*& cursor, const char* end, T value) {
    if (!HasBytes(cursor, end, sizeof(T))) return false;
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    std::memcpy(cursor, &value, sizeof(T));
#else
    for (size_t i = 0; i < sizeof(T); ++i) {
        cursor[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
    }
#endif
    cursor += sizeof(T);
    return true;
}

inline bool ReadU8(const char*& cursor, const char* end, uint8_t& value) {
    return ReadLittleEndian(cursor, end, value);
}

inline bool ReadU16(const char*& cursor, const char* end, uint16_t& value) {
    return ReadLittleEndian(cursor, end, value);
}

inline bool ReadU32(const char*& cursor, const char* end, uint32_t& value) {
    return ReadLittleEndian(cursor, end, value);
}

inline bool ReadF32(const char*& cursor, const char* end, float& value) {
    uint32_t bits = 0;
    if (!ReadLittleEndian(cursor, end, bits)) return false;
    std::memcpy(&value, &bits, sizeof(value));
    return true;
}

inline bool ReadF64(const char*& cursor, const char* end, double& value) {
    uint64_t bits = 0;
    if (!ReadLittleEndian(cursor, end, bits)) return false;
    std::memcpy(&value, &bits, sizeof(value));
    return true;
}

/// Replaces bytes with the next count bytes.
bool ReadBytes(const char*& cursor, const char* end, size_t count, std::vector<char>& bytes);
/// A u8 length, then that many bytes, no terminator.
bool ReadString(const char*& cursor, const char* end, std::string& value);

inline bool WriteU8(char*& cursor, const char* end, uint8_t value) {
    return WriteLittleEndian(cursor, end, value);
}

inline bool WriteU16(char*& cursor, const char* end, uint16_t value) {
    return WriteLittleEndian(cursor, end, value);
}

inline bool WriteU32(char*& cursor, const char* end, uint32_t value) {
    return WriteLittleEndian(cursor, end, value);
}

inline bool WriteF32(char*& cursor, const char* end, float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return WriteLittleEndian(cursor, end, bits);
}

inline bool WriteF64(char*& cursor, const char* end, double value) {
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return WriteLittleEndian(cursor, end, bits);
}

bool WriteBytes(char*& cursor, const char* end, const char* data, size_t count);
/// The low 8 bits of the length, then exactly that many bytes of the string.
bool WriteString(char*& cursor, const char* end, const std::string& value);

}  // namespace TesselFX
