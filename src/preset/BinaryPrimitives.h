#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TesselFX {

// Little-endian, unaligned readers and writers over a cursor and the end of its buffer.
// Each one checks the bytes left before it touches the buffer, moves the cursor only on
// success and returns whether it succeeded.

bool ReadU8(const char*& cursor, const char* end, uint8_t& value);
bool ReadU16(const char*& cursor, const char* end, uint16_t& value);
bool ReadU32(const char*& cursor, const char* end, uint32_t& value);
bool ReadF32(const char*& cursor, const char* end, float& value);
bool ReadF64(const char*& cursor, const char* end, double& value);
/// Replaces bytes with the next count bytes.
bool ReadBytes(const char*& cursor, const char* end, size_t count, std::vector<char>& bytes);
/// A u8 length, then that many bytes, no terminator.
bool ReadString(const char*& cursor, const char* end, std::string& value);

bool WriteU8(char*& cursor, const char* end, uint8_t value);
bool WriteU16(char*& cursor, const char* end, uint16_t value);
bool WriteU32(char*& cursor, const char* end, uint32_t value);
bool WriteF32(char*& cursor, const char* end, float value);
bool WriteF64(char*& cursor, const char* end, double value);
bool WriteBytes(char*& cursor, const char* end, const char* data, size_t count);
/// The low 8 bits of the length, then exactly that many bytes of the string.
bool WriteString(char*& cursor, const char* end, const std::string& value);

}  // namespace TesselFX
