#pragma once

#include "preset/IMasterValueConverter.h"

namespace TesselFX {

/// Snaps value to the nearest multiple of step, half up: trunc((value + step / 2) / step) * step,
/// in float, the truncation to a 32-bit integer. A quotient outside that range is returned
/// unchanged.
float SnapToStep(float value, float step);

/// A system volume of -96 to 0 dB to a master value of 0 to 100, linear in decibels, snapped
/// to tenths.
class SystemVolumeToMasterValueConverter : public IMasterValueConverter {
  public:
    bool Convert(float decibels, float& masterValue) override;
};

}  // namespace TesselFX
