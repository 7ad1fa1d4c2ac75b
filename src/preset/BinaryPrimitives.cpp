#include "preset/BinaryPrimitives.h"

#include <cstring>

namespace TesselFX {

bool ReadBytes(const char*& cursor, const char* end, size_t count, std::vector<char>& bytes) {
    if (!HasBytes(cursor, end, count)) return false;
    bytes.assign(cursor, cursor + count);
    cursor += count;
    return true;
}

bool ReadString(const char*& cursor, const char* end, std::string& value) {
    const char* start = cursor;
    uint8_t length = 0;
    if (!ReadU8(cursor, end, length)) return false;
    if (!HasBytes(cursor, end, length)) {
        cursor = start;
        return false;
    }
    value.assign(cursor, length);
    cursor += length;
    return true;
}

bool WriteBytes(char*& cursor, const char* end, const char* data, size_t count) {
    if (!HasBytes(cursor, end, count)) return false;
    if (count != 0) std::memcpy(cursor, data, count);
    cursor += count;
    return true;
}

bool WriteString(char*& cursor, const char* end, const std::string& value) {
    const uint8_t length = static_cast<uint8_t>(value.size() & 0xFF);
    if (!HasBytes(cursor, end, 1u + length)) return false;
    WriteU8(cursor, end, length);
    return WriteBytes(cursor, end, value.data(), length);
}

}  // namespace TesselFX
