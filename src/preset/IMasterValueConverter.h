#pragma once

namespace TesselFX {

/// Turns a control value (a system volume in decibels) into a link-law master value.
class IMasterValueConverter {
  public:
    /// False when the value is out of range; masterValue is then untouched.
    virtual bool Convert(float decibels, float& masterValue) = 0;
    virtual ~IMasterValueConverter() = default;
};

}  // namespace TesselFX
