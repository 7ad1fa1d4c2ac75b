#include "preset/SystemVolumeToMasterValueConverter.h"

#include <cstdint>

namespace TesselFX {

float SnapToStep(float value, float step) {
    const float quotient = (value + step * 0.5f) / step;
    if (!(quotient > -2147483648.0f && quotient < 2147483648.0f)) return value;
    return static_cast<float>(static_cast<int32_t>(quotient)) * step;
}

bool SystemVolumeToMasterValueConverter::Convert(float decibels, float& masterValue) {
    if (!(decibels >= -96.0f && decibels <= 0.0f)) return false;
    const float value = (decibels + 96.0f) / 96.0f * 100.0f;
    masterValue = SnapToStep(value, 0.1f);
    return true;
}

}  // namespace TesselFX
