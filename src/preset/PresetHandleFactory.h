#pragma once

#include "preset/IPresetHandleFactory.h"

namespace TesselFX {

/// Makes a PresetHandle with a link-law serializer and a LinkLaws of its own.
class PresetHandleFactory : public IPresetHandleFactory {
  public:
    std::shared_ptr<IPresetHandle> Create(uint32_t om, uint32_t sm,
                                          SubtypeMasks supportedSubtypeMasks,
                                          const ConstPresetPtrSet& systemPresets,
                                          const PresetPtrSet& userPresets) override;
};

}  // namespace TesselFX
