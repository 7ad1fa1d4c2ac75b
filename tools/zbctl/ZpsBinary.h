#pragma once

#include <string>
#include <vector>

#include "ZpsDocument.h"

namespace TesselFX {
namespace zbctl {

/// Magic of a preset file, the bytes "BPBZ" in file order.
constexpr uint32_t kZpsMagic = 0x5A425042;

/// Section ids of a preset file.
enum ZpsSectionId : uint8_t {
    kZpsSectionInformation = 1,
    kZpsSectionTags = 2,
    kZpsSectionRemarks = 3,
    kZpsSectionPresets = 4,
    kZpsSectionUserModes = 5,
};

/// Item types of a preset record.
constexpr uint8_t kZpsItemParameter = 0;
constexpr uint8_t kZpsItemChunk = 3;

/// Writes a complete preset file: magic, total size, then the sections the document has, in
/// id order. Throws ZbctlError when a value does not fit its field (a mode above 255 in a
/// preset record, an id above 65535, a text longer than 255 bytes, ...): nothing is cut.
std::vector<char> EncodeZps(const ZpsDocument& document);

/// Reads a preset file the way the library does (same section walk, same item rules) and
/// returns everything it holds. Throws ZbctlError, naming the byte offset, where the library
/// refuses the file; adds a text to warnings for what the library passes over silently
/// (unknown sections and item types, trailing bytes).
ZpsDocument DecodeZps(const std::vector<char>& bytes, std::vector<std::string>& warnings);

/// Parses the file with the library's own reader, as zb_initialize does, and returns the
/// reader's error log lines when it refuses the file; empty when it accepts it.
std::vector<std::string> LibraryRefusal(const std::vector<char>& bytes);

}  // namespace zbctl
}  // namespace TesselFX
