#pragma once

#include <functional>
#include <string>
#include <vector>

#include "WarningList.h"
#include "ZpsDocument.h"
#include "preset/ZpsFormat.h"

namespace TesselFX {
namespace zbctl {

/// Writes a complete preset file: magic, total size, then the sections the document has, in
/// id order. Throws ZbctlError when a value does not fit its field (a mode above 255 in a
/// preset record, an id above 65535, more than 65535 items, a text longer than 255 bytes, ...):
/// nothing is cut. The one exception is the 16-bit size of a preset record, which the library's
/// reader does not use: a longer record has it wrapped as the library's own writer does, and a
/// warning says so.
std::vector<char> EncodeZps(const ZpsDocument& document, WarningList& warnings);

/// What reading a preset file found besides its content.
struct ZpsDecodeNotes {
    /// What the library passes over silently: unknown sections and item types, bytes behind
    /// the declared size, a link-law chunk that does not decode.
    WarningList warnings;
    /// Why the library reads the file as cut short (it stops before the end without an error)
    /// or as empty (not one section); empty when it reads the whole file.
    std::string incomplete;
};

/// Reads a preset file the way the library does (same section walk, same item rules) and
/// returns everything it holds. Throws ZbctlError, naming the byte offset, where the library
/// refuses the file. When presets is given, each preset goes to it as soon as it is read, with
/// the section it comes from (user for UserModes), and the document's preset lists stay
/// empty: a reader that looks at each preset once holds one at a time, however many there are.
ZpsDocument DecodeZps(const std::vector<char>& bytes, ZpsDecodeNotes& notes,
                      const std::function<void(ZpsPreset&&, bool user)>& presets = nullptr);

/// The presets of a preset file as a stream that decodes the file again for each pass (a
/// pass of no preset is skipped): what a dump of any size needs beside the file's bytes.
/// The counts are those of document, decoded from the same bytes; bytes must outlive it.
ZpsPresetStream PresetStreamOf(const std::vector<char>& bytes, size_t systemCount,
                               size_t userCount);

/// Parses the file with the library's own reader, as zb_initialize does, and returns the
/// reader's error log lines when it refuses the file; empty when it accepts it. Memory stays
/// that of one preset beside the bytes.
std::vector<std::string> LibraryRefusal(const std::vector<char>& bytes);

}  // namespace zbctl
}  // namespace TesselFX
