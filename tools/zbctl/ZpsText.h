#pragma once

#include <ostream>

#include "ZpsDocument.h"

namespace TesselFX {
namespace zbctl {

/// Writes a preset file's content for reading: sections, then each preset with its modes,
/// subtypes, flags, parameters, link laws and chunks; the presets come from presets. Text from
/// the file is shown with control characters escaped.
void PrintZps(std::ostream& out, const ZpsDocument& document, const ZpsPresetStream& presets);

}  // namespace zbctl
}  // namespace TesselFX
