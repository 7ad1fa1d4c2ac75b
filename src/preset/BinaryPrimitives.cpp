#include "preset/BinaryPrimitives.h"

#include <cstring>

namespace TesselFX {

namespace {

bool Has(const char* cursor, const char* end, size_t count) {
    return cursor <= end && static_cast<size_t>(end - cursor) >= count;
}

template <typename T>
bool ReadLe(const char*& cursor, const char* end, T& value) {
    if (!Has(cursor, end, sizeof(T))) return false;
    T result = 0;
    for (size_t i = 0; i < sizeof(T); ++i) {
        result |= static_cast<T>(static_cast<T>(static_cast<unsigned char>(cursor[i])) << (8 * i));
    }
    value = result;
    cursor += sizeof(T);
    return true;
}

template <typename T>
bool WriteLe(char*& cursor, const char* end, T value) {
    if (!Has(cursor, end, sizeof(T))) return false;
    for (size_t i = 0; i < sizeof(T); ++i) {
        cursor[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
    }
    cursor += sizeof(T);
    return true;
}

}  // namespace

bool ReadU8(const char*& cursor, const char* end, uint8_t& value) {
    return ReadLe(cursor, end, value);
}

bool ReadU16(const char*& cursor, const char* end, uint16_t& value) {
    return ReadLe(cursor, end, value);
}

bool ReadU32(const char*& cursor, const char* end, uint32_t& value) {
    return ReadLe(cursor, end, value);
}

bool ReadF32(const char*& cursor, const char* end, float& value) {
    uint32_t bits = 0;
    if (!ReadLe(cursor, end, bits)) return false;
    std::memcpy(&value, &bits, sizeof(value));
    return true;
}

bool ReadF64(const char*& cursor, const char* end, double& value) {
    uint64_t bits = 0;
    if (!ReadLe(cursor, end, bits)) return false;
    std::memcpy(&value, &bits, sizeof(value));
    return true;
}

bool ReadBytes(const char*& cursor, const char* end, size_t count, std::vector<char>& bytes) {
    if (!Has(cursor, end, count)) return false;
    bytes.assign(cursor, cursor + count);
    cursor += count;
    return true;
}

bool ReadString(const char*& cursor, const char* end, std::string& value) {
    const char* start = cursor;
    uint8_t length = 0;
    if (!ReadU8(cursor, end, length)) return false;
    if (!Has(cursor, end, length)) {
        cursor = start;
        return false;
    }
    value.assign(cursor, length);
    cursor += length;
    return true;
}

bool WriteU8(char*& cursor, const char* end, uint8_t value) { return WriteLe(cursor, end, value); }

bool WriteU16(char*& cursor, const char* end, uint16_t value) {
    return WriteLe(cursor, end, value);
}

bool WriteU32(char*& cursor, const char* end, uint32_t value) {
    return WriteLe(cursor, end, value);
}

bool WriteF32(char*& cursor, const char* end, float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return WriteLe(cursor, end, bits);
}

bool WriteF64(char*& cursor, const char* end, double value) {
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return WriteLe(cursor, end, bits);
}

bool WriteBytes(char*& cursor, const char* end, const char* data, size_t count) {
    if (!Has(cursor, end, count)) return false;
    if (count != 0) std::memcpy(cursor, data, count);
    cursor += count;
    return true;
}

bool WriteString(char*& cursor, const char* end, const std::string& value) {
    const uint8_t length = static_cast<uint8_t>(value.size() & 0xFF);
    if (!Has(cursor, end, 1u + length)) return false;
    WriteU8(cursor, end, length);
    return WriteBytes(cursor, end, value.data(), length);
}

}  // namespace TesselFX
