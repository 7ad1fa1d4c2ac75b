#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace TesselFX {

/// Cuts text at each delimiter: "a,,b" gives "a", "", "b"; "a," gives only "a"; "" gives none.
std::vector<std::string> Split(const std::string& text, char delimiter);

/// Removes every blank, tab, line feed, vertical tab, form feed and carriage return.
std::string RemoveWhiteSpace(const std::string& text);

/// Scanners with the rules of the C library's "%d", "%u"/"%x" and "%lf" conversions: leading
/// white space is skipped, a sign is accepted, a too large number is cut to 32 bits. On success
/// the cursor moves behind the number; on failure it stays. They never read past the text's NUL.
bool ScanInt(const char*& cursor, int32_t& out);
bool ScanUint(const char*& cursor, int base, uint32_t& out);
bool ScanDouble(const char*& cursor, double& out);

/// "[a:b]" anywhere in text; returns the character behind "]", or null with a log line.
const char* ToIntPair(const char* text, int32_t& first, int32_t& second);

/// "[a:b:c]"; c is 0 before parsing. Returns the character behind "]", or null.
const char* ToIntTriple(const char* text, int32_t& first, int32_t& second, int32_t& third);

/// "[id:value,id:value,...]"; appends each pair; what was gathered stays on failure. Returns
/// the character behind "]", or null; "[]" fails.
const char* ToParametersArray(const char* text, std::vector<int32_t>& ids,
                              std::vector<double>& values);

/// "[a:b][id:value,...]": ToIntPair, then ToParametersArray on what follows.
const char* ToTagAndParameters(const char* text, int32_t& first, int32_t& second,
                               std::vector<int32_t>& ids, std::vector<double>& values);

/// "[a:b][0xC,0xD]" with a, b decimal and C, D hexadecimal. Returns the character behind the
/// last "]", or null.
const char* FromTag(const char* text, int32_t& a, int32_t& b, uint32_t& c, uint32_t& d);

}  // namespace TesselFX

namespace TesselFX {

/// Cuts text at its first delimiter into head and tail; without one, the tail is empty.
std::pair<std::string, std::string> CutAtFirst(const std::string& text, char delimiter);

/// std::stoul cut to 32 bits; throws as std::stoul does.
uint32_t ToUint32(const std::string& text);

/// The OR of 1 << (n & 31) over subtype numbers written as "n|n|...", each read by ToUint32.
uint32_t ToSubtypeMask(const std::string& text);

}  // namespace TesselFX
