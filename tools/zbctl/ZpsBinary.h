#pragma once

#include <string>
#include <vector>

#include "ZpsDocument.h"
#include "preset/ZpsFormat.h"

namespace TesselFX {
namespace zbctl {

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
