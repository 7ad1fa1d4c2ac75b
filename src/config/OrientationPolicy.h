#pragma once

#include <map>
#include <string>

#include "config/ConfigTypes.h"

namespace TesselFX {

/// Which subtype mask an orientation angle means for a preset, and which angle is its default.
/// Immutable after construction; one policy serves all control handlers.
class OrientationPolicy {
  public:
    OrientationPolicy(
        const std::map<std::string, std::map<OrientationAngle, SubTypeMask>>& subtypes,
        const std::map<std::string, OrientationAngle>& defaultAngles);
    virtual ~OrientationPolicy();

    /// The mask of the exactly equal angle of the preset's table; 0 for any other angle.
    virtual SubTypeMask GetSubtypeMaskForOrientation(const std::string& presetName,
                                                     OrientationAngle angle) const;
    /// The preset's default angle; 0 if it has none.
    virtual OrientationAngle GetDefaultOrientationAngle(const std::string& presetName) const;

  private:
    std::map<std::string, std::map<OrientationAngle, SubTypeMask>> m_subtypesByPreset;
    std::map<std::string, OrientationAngle> m_defaultAngles;
};

}  // namespace TesselFX
