#pragma once

#include <nlohmann/json.hpp>

#include "ZpsDocument.h"

namespace TesselFX {
namespace zbctl {

/// The JSON form of a preset file. Top level keys: "information", "tags", "remarks",
/// "presets" (the system presets) and "user" ({"enabled_subtypes": [...], "presets": [...]}).
/// A preset: "output_mode", "sound_mode", "subtypes" (subtype numbers; none for a base preset),
/// "name", "remarks", "default_sound_mode", "flags" (the other flag bits), "priority",
/// "parameters" ({"id": value}), "link_laws" ([{"source", "master", "target", "points":
/// [[master, target], ...], "method", "version", "extra"}]) and "chunks" ({"index": "hex"}).
/// Keys at their default value are left out of the output, and ToJson(FromJson(j)) == j for
/// every j so written.

/// Throws ZbctlError naming the JSON path of the first bad or unknown key.
ZpsDocument ZpsFromJson(const nlohmann::json& json);

nlohmann::ordered_json ZpsToJson(const ZpsDocument& document);

}  // namespace zbctl
}  // namespace TesselFX
