#pragma once

#include <map>
#include <string>

#include "config/IVolumePolicy.h"

namespace TesselFX {

/// Immutable after construction; one policy serves all control handlers.
class VolumePolicy : public IVolumePolicy {
  public:
    /// subtypes: preset name -> dB threshold table; priorities: stream type -> priority.
    VolumePolicy(const VolumeSubtypeTables& subtypes, const std::map<int32_t, int32_t>& priorities);
    ~VolumePolicy() override;

    SubTypeMask GetSubtypeMaskForVolume(const std::string& presetName,
                                        double volumeDb) const override;
    double SelectVolumeFromTable(const VolumeTable& table) const override;
    float GetDefaultVolume() const override;

  private:
    VolumeSubtypeTables m_subtypesByPreset;
    std::map<int32_t, int32_t> m_priorities;
};

}  // namespace TesselFX
