#pragma once

#include <ostream>

#include "ZpsDocument.h"

namespace TesselFX {
namespace zbctl {

/// Writes a preset file's content for reading: sections, then each preset with its modes,
/// subtypes, flags, parameters, link laws and chunks.
void PrintZps(std::ostream& out, const ZpsDocument& document);

}  // namespace zbctl
}  // namespace TesselFX
