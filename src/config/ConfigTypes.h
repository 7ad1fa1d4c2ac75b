#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace TesselFX {

/// Device orientation in degrees.
using OrientationAngle = int32_t;

/// One bit per preset subtype: bit n stands for subtype number n; 0 means the base preset.
using SubTypeMask = uint32_t;

/// dB threshold -> mask, ascending; a volume takes the first threshold at or above it.
using VolumeSubtypeTable = std::map<double, SubTypeMask>;

/// Angle -> mask, ascending; an angle selects only an exactly equal entry.
using OrientationSubtypeTable = std::map<OrientationAngle, SubTypeMask>;

}  // namespace TesselFX
