#pragma once

#include "preset/IPresetSetFactory.h"

namespace TesselFX {

/// Makes a PresetSet with a new PresetFactory.
class PresetSetFactory : public IPresetSetFactory {
  public:
    std::shared_ptr<IPresetSet> Create(
        const PresetMap& systemPresets, const PresetMap& userPresets,
        const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory) override;
};

}  // namespace TesselFX
