#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace TesselFX {

/// The text form of command frames and notifications: the standard alphabet with "=" to fill
/// the last group of four, no line breaks. Stateless and thread safe.
namespace Base64 {

/// The 64 characters, in value order.
extern const char* const kAlphabet;

/// Each 3 bytes give 4 characters; a last group of 1 or 2 bytes gives 2 or 3 characters and
/// "=" up to 4.
std::string Encode(const char* data, size_t size);
std::string Encode(const std::vector<char>& data);

/// Reads at most size characters and stops without complaint at the first "=" or character
/// outside the alphabet. Each 4 characters give 3 bytes; 2 or 3 left over give the 1 or 2
/// bytes that they determine fully, a single one gives nothing.
std::vector<char> Decode(const char* text, size_t size);
std::vector<char> Decode(const std::string& text);

}  // namespace Base64
}  // namespace TesselFX
