#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
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

/// Tables by table name or by preset name.
using VolumeSubtypeTables = std::map<std::string, VolumeSubtypeTable>;
using OrientationSubtypeTables = std::map<std::string, OrientationSubtypeTable>;
using DefaultAngles = std::map<std::string, OrientationAngle>;

/// map.at() that throws std::out_of_range with the text "map::at:  key not found" whatever
/// standard library is in use, since configuration errors pass that text to the caller.
template <typename Map>
const typename Map::mapped_type& MapAt(const Map& map, const typename Map::key_type& key) {
    auto it = map.find(key);
    if (it == map.end()) throw std::out_of_range("map::at:  key not found");
    return it->second;
}

}  // namespace TesselFX
