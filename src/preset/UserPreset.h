#pragma once

#include "preset/Preset.h"

namespace TesselFX {

/// A preset made or changed by the user. Its link-law chunk always begins with the clearing
/// marker, so that its laws replace those of the presets merged below it instead of adding
/// to them.
class UserPreset : public Preset {
  public:
    using Preset::Preset;

    void SetChunk(unsigned int index, const std::vector<char>& data) override;
    std::shared_ptr<IPreset> Clone() const override;

    /// The entry that empties the link laws gathered so far.
    static LinkLawEntry ClearingMarker();
};

}  // namespace TesselFX
