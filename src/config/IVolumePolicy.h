#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "config/ConfigTypes.h"

namespace TesselFX {

/// Stream type number -> linear volume of the active streams, ascending by number.
using VolumeTable = std::map<uint32_t, double>;

/// 20 * log10(volume); a linear volume of 0 gives minus infinity.
double VolumeToDb(double volume);

/// Which stream's volume counts, and which subtype mask a volume in dB means.
class IVolumePolicy {
  public:
    virtual ~IVolumePolicy() = default;
    /// The mask of the first threshold at or above volumeDb in the preset's table; 0 otherwise.
    virtual SubTypeMask GetSubtypeMaskForVolume(const std::string& presetName,
                                                double volumeDb) const = 0;
    /// The volume of the highest-priority stream, the loudest among equals; 1.0 when none wins.
    /// Throws std::out_of_range for a stream without a priority.
    virtual double SelectVolumeFromTable(const VolumeTable& table) const = 0;
    virtual float GetDefaultVolume() const = 0;
};

}  // namespace TesselFX
