#pragma once

#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "WarningList.h"
#include "ZpsDocument.h"

namespace TesselFX {
namespace zbctl {

/// The JSON form of a preset file. Top level keys: "information", "tags", "remarks",
/// "presets" (the system presets) and "user" ({"enabled_subtypes": [...], "presets": [...]}).
/// A preset: "output_mode", "sound_mode", "subtypes" (subtype numbers; none for a base preset),
/// "name", "remarks", "default_sound_mode", "flags" (the other flag bits), "priority",
/// "parameters" ({"id": value}), "link_laws" ([{"source", "master", "target", "points":
/// [[master, target], ...], "method", "version", "extra"}]) and "chunks" ({"index": "hex"}).
/// Keys at their default value are left out of the output, and reading what PrintZpsJson
/// wrote gives the same document.

/// Parses JSON text. Throws ZbctlError with the parser's reason and position; warns of a key
/// given twice in one object, whose later value is the one kept.
nlohmann::json ParseZpsJson(const std::vector<char>& text, WarningList& warnings);

/// Throws ZbctlError naming the JSON path of the first bad or unknown key. Warns, naming the
/// path, of what the library would take without complaint but not as meant: a preset given
/// twice (the library keeps the later one), a second default sound mode in an output mode, a
/// parameter given twice under two spellings, link-law points whose master values are not in
/// ascending order, and a link-law method other than "Linear", the only one the library
/// computes.
ZpsDocument ZpsFromJson(const nlohmann::json& json, WarningList& warnings);

/// Writes the JSON form of a document, laid out as nlohmann's dump with an indent of 2, its
/// presets taken one at a time from presets: the JSON tree of the whole document is never
/// held. Text that is not UTF-8 has its bad bytes replaced by U+FFFD.
void PrintZpsJson(std::ostream& out, const ZpsDocument& document, const ZpsPresetStream& presets);

}  // namespace zbctl
}  // namespace TesselFX
